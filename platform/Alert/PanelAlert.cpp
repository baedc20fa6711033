#include "platform/Alert/PanelAlert.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <utility>

#include "platform/Alert/AlertMessage.h"
#include "platform/Descriptor.h"
#include "platform/Report.h"

namespace cv {

namespace {

bool isNamed(const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

/// The ends of a socket, neither of them in the place of a standard stream that the program has closed. Closed ends,
/// and errno, when there is none to be had.
std::pair<Descriptor, Descriptor> makeSocket() {
    std::array<int, 2> ends{-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        return {Descriptor(), Descriptor()};
    }
    const Descriptor first(ends[0]);
    const Descriptor second(ends[1]);
    const auto higher = [](const Descriptor& end) {
        return Descriptor(fcntl(end.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    };
    return {higher(first), higher(second)};
}

/// How cv-alert is to be started: with nothing of the program's but its environment and standard error. In a process
/// group of its own, so that an interrupt from the terminal reaches the program alone, which decides what comes of it.
class SpawnOptions {
public:
    explicit SpawnOptions(int socket) {
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, socket, STDIN_FILENO);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);

        sigset_t signals;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes, &signals);
    }
    ~SpawnOptions() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnOptions(const SpawnOptions&) = delete;
    SpawnOptions& operator=(const SpawnOptions&) = delete;

    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};
};

/// cv-alert, which ends at the latest with this object.
class AlertProgram {
public:
    AlertProgram(const std::string& path, const Descriptor& socket) {
        const SpawnOptions options(socket.get());
        const char* const arguments[] = {"cv-alert", nullptr};
        error_ = posix_spawn(&process_, path.c_str(), &options.actions, &options.attributes,
                             const_cast<char**>(arguments), environ);
        handle_ = Descriptor(error_ == 0 ? static_cast<int>(syscall(SYS_pidfd_open, process_, 0)) : -1);
    }
    /// Its answer is in, or none will come. The program's own code may have seen its end before.
    ~AlertProgram() {
        if (handle_.isOpen()) {
            syscall(SYS_pidfd_send_signal, handle_.get(), SIGKILL, nullptr, 0);
        }
        while (error_ == 0 && waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    AlertProgram(const AlertProgram&) = delete;
    AlertProgram& operator=(const AlertProgram&) = delete;

    /// The errno value that says why it did not start, or 0.
    int error() const { return error_; }

private:
    pid_t process_ = 0;
    int error_ = 0;
    Descriptor handle_;
};

std::nullopt_t notShown(const std::string& reason) {
    report("alert", {reason, "; asking on the terminal"});
    return std::nullopt;
}

}  // namespace

bool displayIsNamed() {
    return isNamed("DISPLAY") || isNamed("WAYLAND_DISPLAY");
}

std::optional<std::size_t> askOnPanel(const Alert& alert, const std::string& path) {
    auto [ours, theirs] = makeSocket();
    if (!ours.isOpen() || !theirs.isOpen()) {
        return notShown("a socket cannot be made: " + errorText(errno));
    }
    const AlertProgram program(path, theirs);
    if (program.error() != 0) {
        return notShown(program.error() == ENOENT ? "cv-alert, which shows alerts on the display, is not installed"
                                                  : "cv-alert cannot be started: " + errorText(program.error()));
    }
    theirs = Descriptor();
    const std::optional<std::size_t> answer = askOver(ours.get(), alert);
    return answer ? answer : notShown("the display does not answer");
}

}  // namespace cv
