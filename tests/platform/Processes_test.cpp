#include <Carbon/Carbon.h>
#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace fs = std::filesystem;

namespace {

TEST(GetProcessInformation, NamesARenamedOrRemovedProgramAsItWasStarted) {
    const test::TempDir folder;
    for (const std::string& name : {std::string(255, 'n'), std::string("na\xC3\xAFve (deleted)")}) {
        const std::string program = folder / name;
        fs::copy_file("/proc/self/exe", program);
        const std::string show = "--gtest_filter=ShowProcessName.*";
        EXPECT_THAT(test::run({program, show}).out, testing::HasSubstr("<" + name + ">"));
        const auto removing = test::run({program, show}, {"", "", {{"REMOVE", program}}, {}, 0});
        EXPECT_THAT(removing.out, testing::HasSubstr("<" + name + ">"));
        EXPECT_FALSE(fs::exists(program));
    }
}

/// Run by the case above under other names.
TEST(ShowProcessName, OnStandardOutput) {
    if (const char* program = std::getenv("REMOVE")) {
        fs::remove(program);
    }
    Str255 name;
    std::memset(name, 0xA5, sizeof name);
    ProcessInfoRec info{};
    info.processInfoLength = sizeof info;
    info.processName = name;
    const ProcessSerialNumber current{0, kCurrentProcess};
    EXPECT_EQ(GetProcessInformation(&current, &info), noErr);
    std::printf("<%.*s>\n", name[0], reinterpret_cast<const char*>(name) + 1);
}

TEST(GetProcessInformation, RefusesOtherProcessesAndRecords) {
    ProcessInfoRec info{};
    info.processInfoLength = sizeof info - 4;
    const ProcessSerialNumber current{0, kCurrentProcess}, other{1, 2};
    EXPECT_EQ(GetProcessInformation(&current, &info), paramErr);
    EXPECT_EQ(GetProcessInformation(&current, nullptr), paramErr);
    info.processInfoLength = sizeof info;
    EXPECT_EQ(GetProcessInformation(&current, &info), noErr) << "without a buffer for the name";
    EXPECT_EQ(GetProcessInformation(&other, &info), procNotFound);
}

}  // namespace
