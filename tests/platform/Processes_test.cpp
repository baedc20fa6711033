#include <Carbon/Carbon.h>

#include "tests/support/Test.h"

namespace {

using namespace test;

constexpr const char* SHOW = "--gtest_filter=ShowProcessName.*";

TEST(GetProcessInformation, NamesARenamedOrRemovedProgramAsItWasStarted) {
    const TempDir folder;
    const std::string full(255, 'n'), accented = "na\xC3\xAFve (deleted)";
    for (const auto& [name, shown] :
         {std::pair{full, full}, {accented, accented}, {"na\xEFve", ""}, {"\xED\xA0\x80", ""}}) {
        const std::string program = folder / name;
        fs::copy_file(fs::read_symlink("/proc/self/exe"), program);
        EXPECT_THAT(run({program, SHOW}).out, HasSubstr("<" + shown + ">"));
        fs::remove(folder / "another name");
        fs::create_hard_link(program, folder / "another name");
        const auto removing = run({program, SHOW}, {"", "", {{"REMOVE", program}}, {}, 0});
        EXPECT_THAT(removing.out, HasSubstr("<" + shown + ">"));
        EXPECT_FALSE(fs::exists(program));
    }
}

/// Linux does not tell a path of more than 4096 bytes; then the name is what the program was called by, of any length.
TEST(GetProcessInformation, CutsALongNameBetweenCharacters) {
    const TempDir folder;
    const char* const startFarBelow = R"sh(
cd "$1" && for i in $(seq 17); do mkdir $(printf %0250d 0) && cd -P $(printf %0250d 0) || exit; done
cp "$2" program && exec 3<program && cd / && exec -a "$(printf '\303\251%.0s' $(seq 200))" /proc/self/fd/3 "$3")sh";
    std::string shown;
    for (int i = 0; i < 127; ++i) {
        shown += "\xC3\xA9";
    }
    const auto result = run({"bash", "-c", startFarBelow, "", folder.path(), fs::read_symlink("/proc/self/exe"), SHOW});
    EXPECT_THAT(result.out, HasSubstr("<" + shown + ">"));
}

/// Run by the cases above under other names.
TEST(ShowProcessName, PrintsTheNameOfThisProcess) {
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
