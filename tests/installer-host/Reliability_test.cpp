#include <gmock/gmock.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <set>

#include "tests/installer-host/HostSupport.h"

namespace {

using namespace test;
using nlohmann::json;
using testing::HasSubstr;

namespace fs = std::filesystem;

constexpr const char* UPDATER = "com.corvane.updater";

json updaterKeys(const InstallRoot& root) {
    return readRoot(root.path())["preferences"][UPDATER];
}

/// The whole program for an ordinary user, who may be unable to reach this build's folder.
TEST(OrdinaryUser, InstallsAndMeetsAnUnreadableStatusFile) {
    const InstallRoot root;
    root.makeVendorFolder();
    root.writeStatus("UpdatesDisabled");
    fs::permissions(root.statusPath(), fs::perms::none);
    const TempDir programs;
    ProcessOptions inBuild;
    inBuild.workingFolder = fs::path(HOST_PROGRAM).parent_path().parent_path();
    ASSERT_EQ(run({"cp", "-r", "--parents", "bin/installer-host", "lib/libCvPlatform.so", "libexec",
                   "CorvaneInstall.bundle", programs.path()},
                  inBuild)
                  .exitStatus,
              0);
    ProcessOptions options;
    options.set = {{"LD_LIBRARY_PATH", programs / "lib"}};
    options.unset = {"DISPLAY", "WAYLAND_DISPLAY"};
    const bool isRoot = geteuid() == 0;
    if (isRoot) {
        options.user = 65534;
        ASSERT_EQ(run({"chown", "-R", "65534:65534", root.path(), programs.path()}).exitStatus, 0);
    }
    std::vector<std::string> command{programs / "bin/installer-host",   "run", "--product=5100", "--root", root.path(),
                                     programs / "CorvaneInstall.bundle"};
    const ProcessResult result = run(command, options);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    const json found = readRoot(root.path());
    EXPECT_EQ(found["preferences"][UPDATER]["UpdateInterval"], json({"int", 2}));
    EXPECT_THAT(found["preferences"][UPDATER]["InstallStatus"][1].get<std::string>(), HasSubstr("open"));
    EXPECT_EQ(found["finder"]["Corvane"].get<std::string>().substr(16, 4), "0400");

    if (isRoot) {
        ASSERT_EQ(chown((root / "Applications/Corvane").c_str(), 0, 0), 0);
        const ProcessResult foreign = run(command, options);
        EXPECT_EQ(foreign.exitStatus, 7);
        EXPECT_THAT(foreign.out, HasSubstr("  not stored: /Applications/Corvane: Permission denied\n"));
    }

    // For the host the link leads to nothing in the root; for the steps, to where they may not look.
    fs::create_directory(root / "closed");
    fs::permissions(root / "closed", fs::perms::none);
    fs::remove_all(root / "Applications/Corvane");
    fs::create_symlink(root / "closed/inside", root / "Applications/Corvane");
    const ProcessResult closed = run(command, options);
    EXPECT_EQ(closed.exitStatus, 7);
    EXPECT_THAT(closed.out, HasSubstr("  not stored: /Applications/Corvane: Permission denied\n"));

    command.emplace_back("--dry-run");
    const ProcessResult refused = run(command, options);
    EXPECT_EQ(refused.exitStatus, 6) << "a dry run cannot copy what its user may not read";
    EXPECT_THAT(refused.err, HasSubstr("a faithful copy"));
}

/// The program is killed later and later, until it comes to its end. Whatever the moment, the updater's file is the old
/// one or one of the new ones.
TEST(Killed, LeavesAWholeFile) {
    constexpr int STEPS = 30;
    constexpr int KILLED = 128 + 9;
    const std::string old = "<plist><dict><key>Old</key><string>kept</string></dict></plist>";
    const InstallRoot root;
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(install(root).exitStatus, 0);
    const std::chrono::duration<double> whole = std::chrono::steady_clock::now() - begin;

    std::set<std::size_t> seen;
    for (int i = 1, exitStatus = KILLED; exitStatus == KILLED; ++i) {
        writeFile(root.preferenceFile(UPDATER), old);
        const std::string moment = std::to_string(whole.count() * i / STEPS);
        exitStatus = run({"timeout", "-s", "KILL", moment, HOST_PROGRAM, "run", "--product=5100", "--root", root.path(),
                          PLUGIN_BUNDLE})
                         .exitStatus;
        ASSERT_THAT(exitStatus, testing::AnyOf(0, KILLED));
        const json keys = updaterKeys(root);
        EXPECT_EQ(keys["Old"], json({"str", "kept"}));
        EXPECT_TRUE(keys.contains("InstalledProducts/Ambrel/CurrentVersion") || !keys.contains("UpdateInterval"));
        seen.insert(keys.size());
    }
    EXPECT_THAT(seen, testing::IsSupersetOf({1U, 3U})) << "no run was killed before it stored anything";
}

TEST(Together, HostsLoseNoKeys) {
    const InstallRoot root;
    const char* const script = R"(
        for code in 6300 3100 5600 3500 5200 5100 7700 5000 4900; do
            "$0" run --product=$code --root "$1" "$2" >/dev/null & all="$all $!"
        done
        for one in $all; do wait "$one" || exit 1; done)";
    const ProcessResult result = run({"sh", "-c", script, HOST_PROGRAM, root.path(), PLUGIN_BUNDLE});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(updaterKeys(root).size(), 10U);
}

TEST(NotStored, IsAnExitStatusAndInTheReport) {
    const InstallRoot root;
    const auto expectInReport = [&](int exitStatus, const std::string& line) {
        const ProcessResult result = install(root);
        EXPECT_EQ(result.exitStatus, exitStatus) << result.err;
        EXPECT_THAT(result.out, HasSubstr(line));
        EXPECT_THAT(result.out, HasSubstr("\"Lang\" = \"en\" (string)")) << "the rest is stored";
    };
    fs::create_directories(root.preferenceFile(UPDATER) + "/in the way");
    expectInReport(7, "  not stored: /Library/Preferences/com.corvane.updater.plist: ");

    fs::remove_all(root.preferenceFile(UPDATER));
    const std::string damaged = "bplist00 and then nothing of the kind";
    writeFile(root.preferenceFile(UPDATER), damaged);
    expectInReport(0, "  + file com.corvane.updater.plist.corrupt-1\n");
    EXPECT_EQ(readFile(root.preferenceFile(UPDATER) + ".corrupt-1"), damaged);
    EXPECT_EQ(updaterKeys(root).size(), 2U);

    writeFile(root.preferenceFile("com.others"), "not the plug-in's business");
    expectInReport(0, "/Library/Preferences/com.others.plist cannot be read");

    writeFile(root / "Applications/Corvane", "no folder");
    expectInReport(0, "/Applications/Corvane/Icon\\r    does not exist");

    fs::remove(root / "Applications/Corvane");
    root.makeVendorFolder();
    ASSERT_EQ(
        run({"setfattr", "-n", "user.com.apple.FinderInfo", "-v", "short", root / "Applications/Corvane"}).exitStatus,
        0);
    expectInReport(7, "the Finder flags of /Applications/Corvane cannot be read");
}

}  // namespace
