#include "installer-host/run/ProcessTable.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace {

/// Starts one process after the other, each of which ends at once.
[[noreturn]] void startForever() {
    for (;;) {
        const pid_t child = fork();
        if (child == 0) {
            _exit(0);
        }
        waitpid(child, nullptr, 0);
    }
}

TEST(ProcessTable, HoldsNoProcessThatEndsAsDescendant) {
    constexpr int LOOKS = 20000;
    const pid_t starter = fork();
    ASSERT_GE(starter, 0);
    if (starter == 0) {
        alarm(60);
        startForever();
    }
    std::string states;
    for (int i = 0; i < LOOKS; ++i) {
        for (const host::ProcessEntry& process : host::descendantsOf(starter)) {
            states += states.find(process.state) == std::string::npos ? std::string(1, process.state) : "";
        }
    }
    kill(starter, SIGKILL);
    waitpid(starter, nullptr, 0);
    EXPECT_NE(states.find('R'), std::string::npos) << "the starter starts none";
    EXPECT_EQ(states.find_first_of("ZXx"), std::string::npos) << states;
}

}  // namespace
