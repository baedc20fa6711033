#include "installer-host/run/ControlGroup.h"

#include <gtest/gtest.h>
#include <linux/sched.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>

namespace {

using namespace host;

pid_t forkAs(pid_t number) {
    clone_args arguments{};
    arguments.exit_signal = SIGCHLD;
    arguments.set_tid = reinterpret_cast<std::uintptr_t>(&number);
    arguments.set_tid_size = 1;
    return static_cast<pid_t>(syscall(SYS_clone3, &arguments, sizeof arguments));
}

/// A process that only waits, until the end of the scope.
class IdleProcess {
public:
    /// With this number, or with any for 0.
    explicit IdleProcess(pid_t number = 0) : number_(number == 0 ? fork() : forkAs(number)) {
        if (number_ == 0) {
            alarm(60);
            pause();
            _exit(0);
        }
    }
    ~IdleProcess() { end(); }
    IdleProcess(const IdleProcess&) = delete;
    IdleProcess& operator=(const IdleProcess&) = delete;

    /// Negative when the system did not let it begin.
    pid_t number() const { return number_; }

    void end() {
        if (number_ > 0) {
            kill(number_, SIGKILL);
            waitpid(number_, nullptr, 0);
            number_ = -1;
        }
    }

private:
    pid_t number_;
};

/// Limits the process as a host does that is then killed. False where nobody may make groups.
bool limitAndLeave(pid_t process) {
    const pid_t host = fork();
    if (host == 0) {
        ControlGroup group;
        _exit(group.limit(PROCESS_CONTROLLER, 8, process) ? 0 : 1);
    }
    int status = 1;
    return host > 0 && waitpid(host, &status, 0) == host && status == 0;
}

/// As root, where the system lets root choose the numbers of processes and make control groups.
TEST(ControlGroup, IsTakenOverFromAHostThatWasKilled) {
    IdleProcess any;
    const pid_t number = any.number();
    ASSERT_GT(number, 0);
    any.end();
    IdleProcess first(number);
    const bool isLeft = first.number() == number && limitAndLeave(number);
    first.end();
    for (const char* which : {"the one that takes over", "the one after it"}) {
        ControlGroup group;
        const IdleProcess next(number);
        if (isLeft && next.number() == number) {  // unless somebody else got the number meanwhile
            EXPECT_TRUE(group.limit(PROCESS_CONTROLLER, 8, number)) << which;
        }
    }
}

}  // namespace
