#include "tests/support/KilledCommand.h"

#include <fcntl.h>
#include <seccomp.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <set>

#include "tests/support/TempDir.h"

namespace test {

namespace {

/// Calls that change the disk whatever their arguments are. One that this processor lacks has a number that no call
/// has.
const std::set<int> CHANGING{SCMP_SYS(mkdir),       SCMP_SYS(mkdirat),         SCMP_SYS(rename),
                             SCMP_SYS(renameat),    SCMP_SYS(renameat2),       SCMP_SYS(link),
                             SCMP_SYS(linkat),      SCMP_SYS(unlink),          SCMP_SYS(unlinkat),
                             SCMP_SYS(rmdir),       SCMP_SYS(fchmod),          SCMP_SYS(fchmodat),
                             SCMP_SYS(chmod),       SCMP_SYS(fchown),          SCMP_SYS(chown),
                             SCMP_SYS(fchownat),    SCMP_SYS(setxattr),        SCMP_SYS(fsetxattr),
                             SCMP_SYS(fsync),       SCMP_SYS(ftruncate),       SCMP_SYS(lsetxattr),
                             SCMP_SYS(removexattr), SCMP_SYS(lremovexattr),    SCMP_SYS(utimensat),
                             SCMP_SYS(fchown32),    SCMP_SYS(utimensat_time64)};

/// Calls that begin a change, besides the making of a file. Another program may change what it likes.
const std::set<int> BEGINNING{SCMP_SYS(rename),   SCMP_SYS(renameat),    SCMP_SYS(linkat), SCMP_SYS(unlinkat),
                              SCMP_SYS(setxattr), SCMP_SYS(removexattr), SCMP_SYS(execve)};

/// Calls that go on with one: a file gets its owner, its mode and its times, and then one flush.
const std::set<int> CONTINUING{SCMP_SYS(fchmod), SCMP_SYS(fchown), SCMP_SYS(fchown32), SCMP_SYS(utimensat),
                               SCMP_SYS(utimensat_time64)};

bool isOnDisk(pid_t process, unsigned long fd) {
    std::error_code error;
    const auto target =
        std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/fd/" + std::to_string(fd), error);
    return !error && target.string().front() == '/' && target.string().rfind("/dev/", 0) != 0;
}

bool changesTheDisk(pid_t process, const __ptrace_syscall_info& info) {
    const auto call = static_cast<int>(info.entry.nr);
    const auto* arguments = info.entry.args;
    return CHANGING.count(call) != 0 || (call == SCMP_SYS(open) && (arguments[1] & O_CREAT) != 0) ||
           (call == SCMP_SYS(openat) && (arguments[2] & O_CREAT) != 0) ||
           (call == SCMP_SYS(write) && isOnDisk(process, static_cast<unsigned long>(arguments[0])));
}

std::string nameOf(pid_t process) {
    return readFile("/proc/" + std::to_string(process) + "/comm");
}

/// Ends all processes that are traced, and waits for their ends.
void killAll(const std::set<pid_t>& processes) {
    for (const pid_t process : processes) {
        kill(process, SIGKILL);
    }
    int status = 0;
    for (pid_t process = 0; (process = waitpid(-1, &status, __WALL)) > 0;) {
        if (WIFSTOPPED(status)) {
            kill(process, SIGKILL);  // it was just begun
        }
    }
}

/// The signal that a stopped process is to get when it goes on.
int signalFor(int status, bool isNew) {
    const int signal = WSTOPSIG(status);
    const bool isOfTracing = signal == (SIGTRAP | 0x80) || signal == SIGTRAP || status >> 16 != 0;
    return isOfTracing || (isNew && signal == SIGSTOP) ? 0 : signal;
}

/// Runs the command, and kills it with all that it started before the first system call that `isLast` chooses. False
/// when it chose none, and the command came to its end.
bool runUntil(const std::vector<std::string>& command,
              const std::function<bool(pid_t process, const __ptrace_syscall_info& info)>& isLast) {
    const pid_t first = fork();
    if (first == 0) {
        setenv("ASAN_OPTIONS", "detect_leaks=0", 1);  // the leak checker traces, too; there is room for one only
        // The count of an outcome may be that of its condition less that of the other outcome: a process that is killed
        // between the two would count one that it never came to.
        setenv("LLVM_PROFILE_FILE", "/dev/null", 1);
        std::vector<char*> arguments;
        arguments.reserve(command.size() + 1);
        for (const std::string& argument : command) {
            arguments.push_back(const_cast<char*>(argument.c_str()));
        }
        arguments.push_back(nullptr);
        const int nothing = open("/dev/null", O_RDWR);
        dup2(nothing, 1);
        dup2(nothing, 2);
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    constexpr auto OPTIONS = PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK |
                             PTRACE_O_TRACECLONE | PTRACE_O_TRACEEXEC;
    std::set<pid_t> processes;
    int status = 0;
    for (pid_t process = 0; (process = waitpid(-1, &status, __WALL)) > 0;) {
        if (!WIFSTOPPED(status)) {
            processes.erase(process);
            continue;
        }
        const bool isNew = processes.insert(process).second;
        ptrace(PTRACE_SETOPTIONS, process, nullptr, OPTIONS);
        __ptrace_syscall_info info{};
        const bool isCall = WSTOPSIG(status) == (SIGTRAP | 0x80) &&
                            ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof info, &info) > 0 &&
                            info.op == PTRACE_SYSCALL_INFO_ENTRY;
        if (isCall && isLast(process, info)) {
            killAll(processes);
            return true;
        }
        ptrace(PTRACE_SYSCALL, process, nullptr, signalFor(status, isNew));
    }
    return false;
}

}  // namespace

bool runAndKill(const std::vector<std::string>& command, const std::string& name, int call) {
    return runUntil(command, [&](pid_t process, const __ptrace_syscall_info& info) {
        return changesTheDisk(process, info) && nameOf(process).rfind(name, 0) == 0 && call-- == 0;
    });
}

bool flushesEachChange(const std::vector<std::string>& command, const std::string& name) {
    bool isFlushed = true;
    return !runUntil(command, [&](pid_t process, const __ptrace_syscall_info& info) {
        const auto call = static_cast<int>(info.entry.nr);
        const bool isMaking = call == SCMP_SYS(openat) && (info.entry.args[2] & O_CREAT) != 0;
        const bool begins = BEGINNING.count(call) != 0 || isMaking;
        if ((!begins && CONTINUING.count(call) == 0 && call != SCMP_SYS(fsync)) || nameOf(process) != name + "\n") {
            return false;
        }
        const bool isTooEarly = begins && !isFlushed;
        if (call != SCMP_SYS(execve)) {                                       // which itself changes nothing
            isFlushed = call == SCMP_SYS(fsync) || call == SCMP_SYS(linkat);  // of two names either may be lost
        }
        return isTooEarly;
    });
}

}  // namespace test
