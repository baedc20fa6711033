#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <regex>

#include "tests/installer-host/HostSupport.h"

namespace {

using namespace test;
using testing::HasSubstr;

namespace fs = std::filesystem;

/// Everything in a root that a user can see, one text: names, kinds, modes, owners, sizes, all times, links,
/// attributes. It is looked at through a read-only view, since looking would change access times.
std::string listing(const InstallRoot& root) {
    const auto look = [&](std::vector<std::string> command) {
        const std::vector<std::string> view{"bwrap", "--ro-bind", "/", "/", "--"};
        command.insert(command.begin(), view.begin(), view.end());
        command.push_back(root.path());
        return run(command).out;
    };
    return look({"getfattr", "-R", "-P", "-d", "-m", "-", "--absolute-names", "--encoding=hex"}) +
           look({"sh", "-c", R"(find "$0" -printf '%p %y %m %U %G %n %s %b %T@ %C@ %A@ %l\n')"});
}

/// A root with one of everything, all of it old: an access time that changes is then seen under relatime, too.
void fill(const InstallRoot& root) {
    root.makeVendorFolder();
    root.writeStatus("UpdatesEnabled");
    writeFile(root.preferenceFile("com.corvane.updater"), "<plist><dict><key>Old</key><true/></dict></plist>");
    writeFile(root / "Library/read-only", "x");
    writeFile(root / "Library/sealed/inside", "x");
    fs::create_hard_link(root / "Library/read-only", root / "Library/hard link");
    fs::create_symlink("nowhere", root / "Library/dangling");
    fs::create_symlink("/Library/Preferences", root / "Applications/link");
    ASSERT_EQ(mkfifo((root / "Library/fifo").c_str(), 0640), 0);
    setFinderInfo(root / "Applications/Corvane", "0x" + std::string(16, '0') + "0100" + std::string(44, '0'));
    ASSERT_EQ(run({"truncate", "-s", "5G", root / "Library/sparse"}).exitStatus, 0);
    fs::permissions(root / "Library/read-only", fs::perms::owner_read);
    fs::permissions(root / "Library/sealed", fs::perms::owner_read | fs::perms::owner_exec);
    const ProcessResult aged =
        run({"find", root.path(), "-depth", "-exec", "touch", "-h", "-d", "2001-02-03 04:05:06.789", "{}", "+"});
    ASSERT_EQ(aged.exitStatus, 0) << aged.err;
}

TEST(DryRun, ChangesNothingAndReportsWhatWouldChange) {
    const InstallRoot root;
    fill(root);
    const std::string before = listing(root);
    const ProcessResult result = install(root, {"--dry-run", "--language=6"});
    const std::string after = listing(root);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(before, after);
    EXPECT_THAT(result.out, HasSubstr("dry run"));
    EXPECT_THAT(result.out, HasSubstr("    + \"Lang\" = \"es\" (string)\n"));

    const auto reportOf = [&](const std::vector<std::string>& arguments) {
        const std::regex differs(R"re("(started|milliseconds|modified|dryRun)": .*)re");
        return std::regex_replace(install(root, arguments).out, differs, "");
    };
    const std::string would = reportOf({"--dry-run", "--format=json"});
    const std::string does = reportOf({"--format=json"});
    EXPECT_THAT(would, HasSubstr("\"changed\": true"));
    EXPECT_EQ(would, does) << "a dry run's report differs from that of the run";
    fs::permissions(root / "Library/sealed", fs::perms::owner_all);
}

TEST(DryRun, LeavesNoCopyBehind) {
    const InstallRoot root;
    const TempDir temporary;
    fill(root);
    ProcessOptions options;
    options.set = {{"TMPDIR", temporary.path()}};
    EXPECT_EQ(install(root, {"--dry-run"}, options).exitStatus, 0);

    // The post-install step waits for the writer of a pipe.
    fs::remove(root.statusPath());
    ASSERT_EQ(mkfifo(root.statusPath().c_str(), 0600), 0);
    const ProcessResult waiting = install(root, {"--dry-run", "--timeout=1"}, options);
    EXPECT_EQ(waiting.exitStatus, 9);
    EXPECT_THAT(waiting.out, HasSubstr("InstalledProducts/Ambrel/CurrentVersion")) << "what was done is reported";
    const ProcessResult interrupted = run({"timeout", "-s", "INT", "2", HOST_PROGRAM, "run", "--product=5100",
                                           "--dry-run", "--root", root.path(), PLUGIN_BUNDLE},
                                          options);
    EXPECT_EQ(interrupted.exitStatus, 124) << "its user ends the program, with a copy in use";
    EXPECT_TRUE(fs::is_empty(temporary.path()));

    options.set = {{"TMPDIR", temporary / "missing"}};
    const ProcessResult noPlace = install(root, {"--dry-run"}, options);
    EXPECT_EQ(noPlace.exitStatus, 6);
    EXPECT_THAT(noPlace.err, HasSubstr("Set TMPDIR to a folder"));
    fs::permissions(root / "Library/sealed", fs::perms::owner_all);
}

}  // namespace
