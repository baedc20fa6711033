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

#include "installer-host/run/ProcessTable.h"

namespace host {

namespace {

using Clock = std::chrono::steady_clock;

/// How long to wait for what was killed: a process that itself waits for a dead file server cannot be ended.
constexpr std::chrono::seconds PATIENCE{5};

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

/// Leaves open, in the command that this process becomes, the standard descriptors and `kept` alone.
void keepOpen(const std::vector<int>& kept) {
    if (close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC) != 0) {
        // Kernels before 5.11.
        for (int fd = STDERR_FILENO + 1; fd < static_cast<int>(sysconf(_SC_OPEN_MAX)); ++fd) {
            fcntl(fd, F_SETFD, FD_CLOEXEC);
        }
    }
    for (const int fd : kept) {
        fcntl(fd, F_SETFD, 0);
    }
}

[[noreturn]] void becomeCommand(const ChildOrder& order, pid_t parent) {
    HeldSignals::instance().releaseInChild();
    // For an end of this process that leaves it no time to end its child.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(127);
    }
    if (order.isApart) {
        setpgid(0, 0);
    }
    dup2(order.input, STDIN_FILENO);
    dup2(order.output, STDOUT_FILENO);
    dup2(order.output, STDERR_FILENO);
    keepOpen(order.descriptors);
    if (order.prepare && !order.prepare()) {
        _exit(127);
    }
    std::vector<char*> arguments;
    arguments.reserve(order.command.size() + 1);
    for (const std::string& argument : order.command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    std::perror(arguments[0]);
    _exit(127);
}

int millisecondsUntil(Clock::time_point time) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(time - Clock::now()).count();
    return left < 0 ? 0 : static_cast<int>(left) + 1;
}

}  // namespace

/// A started child; ended with all that it started, if it is still alive, at the end of the scope.
class ChildProcess {
public:
    explicit ChildProcess(const ChildOrder& order) : order_(order), watchers_(order.watchers) {
        // What the child leaves behind becomes a child of this process, which ends it.
        prctl(PR_SET_CHILD_SUBREAPER, 1);
        const pid_t parent = getpid();
        pid_ = fork();
        if (pid_ < 0) {
            fail("fork");
        }
        if (pid_ == 0) {
            becomeCommand(order, parent);
        }
        end_ = cv::Descriptor(static_cast<int>(syscall(SYS_pidfd_open, pid_, 0)));
        if (!end_.isOpen()) {
            const int error = errno;
            kill(pid_, SIGKILL);
            reap(pid_);
            throw std::system_error(error, std::generic_category(), "pidfd_open");
        }
    }
    ~ChildProcess() { endAll(); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    ChildEnd follow() {
        ChildEnd end = waitForEnd();
        const int exitStatus = endAll();
        end.exitStatus = end.how == ChildEnd::How::ByItself ? exitStatus : 0;
        if (hearTheRest() == Watching::EndChild && end.how == ChildEnd::How::ByItself) {
            end.how = ChildEnd::How::Refused;
        }
        return end;
    }

private:
    /// Serves the watchers until the child ends or is to be ended.
    ChildEnd waitForEnd() {
        const Clock::time_point deadline = Clock::now() + order_.timeout;
        const bool hasDeadline = order_.timeout.count() != 0;
        for (;;) {
            std::vector<pollfd> fds = watched();
            fds.insert(fds.begin(), {pollfd{signals_.fd(), POLLIN, 0}, pollfd{end_.get(), POLLIN, 0}});
            if (poll(fds.data(), fds.size(), hasDeadline ? millisecondsUntil(deadline) : -1) < 0 && errno != EINTR) {
                fail("poll");
            }
            if (const int signal = signals_.take(); signal != 0) {
                return {ChildEnd::How::Interrupted, 0, signal};
            }
            if (fds[1].revents != 0) {
                return {};
            }
            if (hasDeadline && Clock::now() >= deadline) {
                return {ChildEnd::How::TimedOut};
            }
            if (serve(fds.data() + 2) == Watching::EndChild) {
                return {ChildEnd::How::Refused};
            }
        }
    }

    std::vector<pollfd> watched() const {
        std::vector<pollfd> fds;
        for (const Watcher& watcher : watchers_) {
            fds.push_back({watcher.fd, POLLIN, 0});
        }
        return fds;
    }

    /// Calls the watchers that have something to read; `fds` are theirs.
    Watching serve(const pollfd* fds) {
        std::vector<Watcher> left;
        Watching wanted = Watching::GoOn;
        for (const Watcher& watcher : watchers_) {
            const Watching next = (fds++)->revents != 0 ? watcher.onReady() : Watching::GoOn;
            if (next == Watching::GoOn) {
                left.push_back(watcher);
            }
            wanted = next == Watching::EndChild ? next : wanted;
        }
        watchers_ = left;
        return wanted;
    }

    /// Serves the watchers as long as there is something left to read from what the dead wrote.
    Watching hearTheRest() {
        const Clock::time_point deadline = Clock::now() + PATIENCE;
        for (std::vector<pollfd> fds = watched(); poll(fds.data(), fds.size(), 0) > 0; fds = watched()) {
            if (serve(fds.data()) == Watching::EndChild || Clock::now() >= deadline) {
                return Watching::EndChild;
            }
        }
        return Watching::GoOn;
    }

    /// Ends the child and all that it started. Returns how it ended; 0 when it cannot be ended.
    int endAll() {
        if (pid_ == 0) {
            return 0;
        }
        if (order_.endOthers) {
            order_.endOthers();
        }
        syscall(SYS_pidfd_send_signal, end_.get(), SIGKILL, nullptr, 0);
        const Clock::time_point deadline = Clock::now() + PATIENCE;
        pollfd end{end_.get(), POLLIN, 0};
        int status = 0;
        if (poll(&end, 1, millisecondsUntil(deadline)) > 0) {
            status = reap(pid_);
        }
        pid_ = 0;
        endOrphans(deadline);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    /// Ends what lost its parent: each that is killed can leave others.
    static void endOrphans(Clock::time_point deadline) {
        while (Clock::now() < deadline) {
            const pid_t ended = waitpid(-1, nullptr, WNOHANG);
            if (ended < 0) {
                return;  // there is no other child
            }
            if (ended == 0) {
                for (const ProcessEntry& process : processTable()) {
                    if (process.parent == getpid()) {
                        kill(process.id, SIGKILL);
                    }
                }
            }
        }
    }

    const HeldSignals& signals_ = HeldSignals::instance();
    const ChildOrder& order_;
    std::vector<Watcher> watchers_;
    pid_t pid_ = 0;
    cv::Descriptor end_;
};

Pipe::Pipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        fail("pipe2");
    }
    read = cv::Descriptor(ends[0]);
    write = cv::Descriptor(ends[1]);
    fcntl(read.get(), F_SETFL, O_NONBLOCK);
}

ChildEnd runChild(const ChildOrder& order) {
    return ChildProcess(order).follow();
}

int reap(pid_t child) {
    int status = -1;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

int takeInterruption() {
    return HeldSignals::instance().take();
}

int interruptionDescriptor() {
    return HeldSignals::instance().fd();
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
