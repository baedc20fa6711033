#include "installer-host/run/LeftProcesses.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>

#include "installer-host/run/ProcessTable.h"

namespace host {

namespace {

constexpr std::size_t MOST_NAMES = 256;

cv::Descriptor openProcess(pid_t process) {
    return cv::Descriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
}

void send(const cv::Descriptor& process, int signal) {
    syscall(SYS_pidfd_send_signal, process.get(), signal, nullptr, 0);
}

}  // namespace

LeftProcesses::LeftProcesses() : end_(epoll_create1(EPOLL_CLOEXEC)) {
    if (!end_.isOpen()) {
        throw std::system_error(errno, std::generic_category(), "epoll_create1");
    }
}

void LeftProcesses::begin(pid_t starter) {
    const std::vector<pid_t> children = childrenOf(starter);
    worker_ = openProcess(children.empty() ? 0 : children.front());
    epoll_event ended{};
    ended.events = EPOLLIN;
    if (!worker_.isOpen() || epoll_ctl(end_.get(), EPOLL_CTL_ADD, worker_.get(), &ended) != 0) {
        return;
    }
    starter_ = starter;
    const pid_t outer = starter == getpid() ? starter : parentOf(starter);
    if (outer != getpid()) {
        outer_ = openProcess(outer);
        send(outer_, SIGSTOP);
    }
}

Watcher LeftProcesses::watcher() {
    return {end_.get(), [this] {
                look();
                return Watching::Stop;
            }};
}

void LeftProcesses::look() {
    pollfd end{worker_.get(), POLLIN, 0};
    if (poll(&end, 1, 0) <= 0) {
        return;
    }
    for (const ProcessEntry& process : descendantsOf(starter_)) {
        names_.push_back(process.name);
    }
    names_.resize(std::min(names_.size(), MOST_NAMES));
    worker_ = cv::Descriptor();
    send(outer_, SIGCONT);
}

}  // namespace host
