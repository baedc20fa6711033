#include "installer-host/run/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <system_error>

namespace host {

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// Holds back the signals by which a user ends a program, from the first child to the end of the process, and gives
/// them as readable events: what is to be tidied up is tidied up, however often the user asks.
class HeldSignals {
public:
    static const HeldSignals& instance() {
        static const HeldSignals held;
        return held;
    }

    int fd() const { return fd_.get(); }

    /// Gives a child process the signals as this one had them.
    void releaseInChild() const { sigprocmask(SIG_SETMASK, &before_, nullptr); }

    /// The signal that came, or 0.
    int take() const {
        signalfd_siginfo info{};
        const bool came = read(fd_.get(), &info, sizeof info) == static_cast<ssize_t>(sizeof info);
        return came ? static_cast<int>(info.ssi_signo) : 0;
    }

private:
    HeldSignals() {
        sigset_t held;
        sigemptyset(&held);
        for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
            sigaddset(&held, number);
        }
        sigprocmask(SIG_BLOCK, &held, &before_);
        fd_ = cv::Descriptor(signalfd(-1, &held, SFD_CLOEXEC | SFD_NONBLOCK));
    }

    sigset_t before_{};
    cv::Descriptor fd_;
};

[[noreturn]] void becomeCommand(const std::vector<std::string>& command, int eventFd, pid_t parent) {
    HeldSignals::instance().releaseInChild();
    dup2(STDERR_FILENO, STDOUT_FILENO);
    fcntl(eventFd, F_SETFD, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(127);
    }
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    std::perror(arguments[0]);
    _exit(127);
}

}  // namespace

/// A started child; killed, if it is still alive, at the end of the scope.
class ChildProcess {
public:
    ChildProcess(const std::vector<std::string>& command, EventPipe& events) : events_(std::move(events.read_)) {
        const pid_t parent = getpid();
        pid_ = fork();
        if (pid_ < 0) {
            fail("fork");
        }
        if (pid_ == 0) {
            becomeCommand(command, events.childEnd(), parent);
        }
        events.write_ = cv::Descriptor();
        end_ = cv::Descriptor(static_cast<int>(syscall(SYS_pidfd_open, pid_, 0)));
        if (!end_.isOpen()) {
            const int error = errno;
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
            throw std::system_error(error, std::generic_category(), "pidfd_open");
        }
    }
    ~ChildProcess() {
        if (pid_ > 0) {
            stop();
        }
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    ChildEnd follow(std::chrono::seconds timeout, const std::function<void(const nlohmann::json&)>& onEvent) {
        const Clock::time_point deadline = Clock::now() + timeout;
        for (;;) {
            std::array<pollfd, 3> fds{pollfd{end_.get(), POLLIN, 0}, pollfd{events_.get(), POLLIN, 0},
                                      pollfd{signals_.fd(), POLLIN, 0}};
            const int wait = timeout.count() == 0 ? -1 : millisecondsUntil(deadline);
            if (poll(fds.data(), fds.size(), wait) < 0 && errno != EINTR) {
                fail("poll");
            }
            if (const int signal = signals_.take(); signal != 0) {
                stop();
                throw Interrupted{signal};
            }
            if (fds[1].revents != 0) {
                passEventsOn(onEvent);
            } else if (fds[0].revents != 0) {
                return {false, reap()};
            } else if (wait == 0) {
                stop();
                return {true, 0};
            }
        }
    }

private:
    static int millisecondsUntil(Clock::time_point time) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(time - Clock::now()).count();
        return left < 0 ? 0 : static_cast<int>(left) + 1;
    }

    /// Reads what is there; the pipe is closed at its end, and poll() then passes over it.
    void passEventsOn(const std::function<void(const nlohmann::json&)>& onEvent) {
        std::array<char, 4096> buffer;
        const ssize_t count = read(events_.get(), buffer.data(), buffer.size());
        if (count <= 0) {
            events_ = cv::Descriptor();
            return;
        }
        text_.append(buffer.data(), static_cast<std::size_t>(count));
        for (std::size_t end; (end = text_.find('\n')) != std::string::npos; text_.erase(0, end + 1)) {
            const auto event = nlohmann::json::parse(text_.substr(0, end), nullptr, false);
            if (event.is_object()) {
                onEvent(event);
            }
        }
    }

    /// Kills the child and waits until it and what it started in turn are gone: those hold the other end of the pipe.
    void stop() {
        kill(pid_, SIGKILL);
        if (waitFor(end_.get(), POLLIN)) {
            reap();
        }
        std::array<char, 4096> ignored;
        while (events_.isOpen() && waitFor(events_.get(), POLLIN) &&
               read(events_.get(), ignored.data(), ignored.size()) > 0) {
        }
        pid_ = 0;
    }

    /// Waits for a while only: a process that itself waits for a dead file server cannot be killed.
    static bool waitFor(int fd, short what) {
        constexpr int PATIENCE_MILLISECONDS = 5000;
        pollfd end{fd, what, 0};
        return poll(&end, 1, PATIENCE_MILLISECONDS) > 0;
    }

    int reap() {
        int status = 0;
        while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
        }
        pid_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    const HeldSignals& signals_ = HeldSignals::instance();
    pid_t pid_ = 0;
    cv::Descriptor end_;
    cv::Descriptor events_;
    std::string text_;
};

EventPipe::EventPipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        fail("pipe2");
    }
    read_ = cv::Descriptor(ends[0]);
    write_ = cv::Descriptor(ends[1]);
}

ChildEnd runChild(const std::vector<std::string>& command, EventPipe& events, std::chrono::seconds timeout,
                  const std::function<void(const nlohmann::json&)>& onEvent) {
    return ChildProcess(command, events).follow(timeout, onEvent);
}

ChildEnd runChild(const std::vector<std::string>& command) {
    EventPipe silent;
    return runChild(command, silent, std::chrono::seconds(0), [](const nlohmann::json&) {});
}

void endBySignal(int signal) {
    std::signal(signal, SIG_DFL);
    sigset_t held;
    sigemptyset(&held);
    sigaddset(&held, signal);
    std::raise(signal);
    sigprocmask(SIG_UNBLOCK, &held, nullptr);
    _exit(128 + signal);
}

}  // namespace host
