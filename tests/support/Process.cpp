#include "tests/support/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "platform/Descriptor.h"

namespace test {

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

struct Pipe {
    cv::Descriptor read, write;
    Pipe() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            fail("pipe2");
        }
        read = cv::Descriptor(ends[0]);
        write = cv::Descriptor(ends[1]);
    }
};

[[noreturn]] void runChild(const std::vector<std::string>& command, const ProcessOptions& options) {
    for (const std::string& name : options.unset) {
        unsetenv(name.c_str());
    }
    for (const auto& [name, value] : options.set) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    const bool ready = (options.workingFolder.empty() || chdir(options.workingFolder.c_str()) == 0) &&
                       (options.user == 0 || (setgid(options.user) == 0 && setuid(options.user) == 0));
    if (ready) {
        std::vector<char*> argv;
        for (const std::string& argument : command) {
            argv.push_back(const_cast<char*>(argument.c_str()));
        }
        argv.push_back(nullptr);
        execvp(argv[0], argv.data());
    }
    std::perror(command[0].c_str());
    _exit(127);
}

/// Feeds `in` to the child and collects both of its outputs until it closes them.
void exchange(Pipe& in, Pipe& out, Pipe& err, const std::string& input, ProcessResult& result) {
    std::size_t written = 0;
    if (input.empty()) {
        in.write = cv::Descriptor();
    }
    while (out.read.isOpen() || err.read.isOpen()) {
        std::array<pollfd, 3> fds{pollfd{out.read.get(), POLLIN, 0}, pollfd{err.read.get(), POLLIN, 0},
                                  pollfd{in.write.get(), POLLOUT, 0}};
        if (poll(fds.data(), fds.size(), -1) < 0) {
            fail("poll");
        }
        const auto collect = [](cv::Descriptor& fd, short events, std::string& text) {
            std::array<char, 65536> buffer;
            if (events == 0) {
                return;
            }
            const ssize_t count = read(fd.get(), buffer.data(), buffer.size());
            if (count > 0) {
                text.append(buffer.data(), static_cast<std::size_t>(count));
            } else {
                fd = cv::Descriptor();
            }
        };
        collect(out.read, fds[0].revents, result.out);
        collect(err.read, fds[1].revents, result.err);
        if (fds[2].revents != 0) {
            const ssize_t count = write(in.write.get(), input.data() + written, input.size() - written);
            written += count > 0 ? static_cast<std::size_t>(count) : 0;
            if (count < 0 || written == input.size()) {
                in.write = cv::Descriptor();
            }
        }
    }
}

/// Waits for the end of `child`: its exit status, or 128 + the signal that ended it.
int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

ProcessResult run(const std::vector<std::string>& command, const ProcessOptions& options) {
    Pipe in, out, err;
    std::signal(SIGPIPE, SIG_IGN);
    const pid_t child = fork();
    if (child < 0) {
        fail("fork");
    }
    if (child == 0) {
        dup2(in.read.get(), STDIN_FILENO);
        dup2(out.write.get(), STDOUT_FILENO);
        dup2(err.write.get(), STDERR_FILENO);
        std::signal(SIGPIPE, SIG_DFL);
        runChild(command, options);
    }
    in.read = cv::Descriptor();
    out.write = cv::Descriptor();
    err.write = cv::Descriptor();

    ProcessResult result;
    exchange(in, out, err, options.in, result);
    result.exitStatus = waitFor(child);
    return result;
}

bool holdsInACopy(const std::function<bool()>& check) {
    const pid_t child = fork();
    if (child < 0) {
        fail("fork");
    }
    if (child == 0) {
        bool holds = false;
        try {
            holds = check();
        } catch (...) {  // the caller sees a check that does not hold
        }
        _exit(holds ? 0 : 1);
    }
    return waitFor(child) == 0;
}

bool holdsForOrdinaryUser(const std::function<bool()>& check) {
    constexpr unsigned NOBODY = 65534;
    return holdsInACopy([&] {
        const bool isOrdinary = geteuid() != 0 || (setgid(NOBODY) == 0 && setuid(NOBODY) == 0);
        return isOrdinary && check();
    });
}

}  // namespace test
