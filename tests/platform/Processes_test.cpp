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

std::string processName() {
    Str255 name;
    std::memset(name, 0xA5, sizeof name);
    ProcessInfoRec info{};
    info.processInfoLength = sizeof info;
    info.processName = name;
    const ProcessSerialNumber current{0, kCurrentProcess};
    EXPECT_EQ(GetProcessInformation(&current, &info), noErr);
    return std::string(reinterpret_cast<const char*>(name) + 1, name[0]);
}

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
    std::printf("<%s>\n", processName().c_str());
}

TEST(GetProcessInformation, RefusesOtherProcessesAndRecords) {
    ProcessInfoRec info{};
    info.processInfoLength = sizeof info;
    const ProcessSerialNumber process{0, kCurrentProcess};
    EXPECT_EQ(GetProcessInformation(&process, &info), noErr);
    EXPECT_EQ(GetProcessInformation(nullptr, &info), paramErr);
    EXPECT_EQ(GetProcessInformation(&process, nullptr), paramErr);
    for (const ProcessSerialNumber other : {ProcessSerialNumber{0, kNoProcess}, {0, kSystemProcess}, {1, 2}}) {
        EXPECT_EQ(GetProcessInformation(&other, &info), procNotFound);
    }
    info.processInfoLength -= 4;
    EXPECT_EQ(GetProcessInformation(&process, &info), paramErr);
}

TEST(StopAlert, FindsNoResource) {
    EXPECT_EQ(StopAlert(5000, nullptr), -1);
}

TEST(NewPtr, GivesABlockOfAnySizeButANegativeOne) {
    const Ptr block = NewPtr(0);
    EXPECT_NE(block, nullptr);
    DisposePtr(block);
    EXPECT_EQ(NewPtr(-1), nullptr);
    DisposePtr(nullptr);
}

}  // namespace
