#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

#include "tests/installer-host/HostSupport.h"

namespace {

using namespace test;
using nlohmann::json;
using testing::HasSubstr;

namespace fs = std::filesystem;

constexpr const char* UPDATER = "com.corvane.updater";

TEST(Reliability, AnOrdinaryUserInstallsAndMeetsAnUnreadableStatusFile) {
    const InstallRoot root;
    root.makeVendorFolder();
    root.writeStatus("UpdatesDisabled");
    fs::permissions(root.statusPath(), fs::perms::none);
    const bool isRoot = geteuid() == 0;
    const OrdinaryUser user;
    user.own(root.path());
    std::vector<std::string> arguments{"run", "--product=5100", "--root", root.path(), user.bundle()};
    const ProcessResult result = user.runHost(arguments);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    const json found = readRoot(root.path());
    EXPECT_EQ(found["preferences"][UPDATER]["UpdateInterval"], json({"int", 2}));
    EXPECT_THAT(found["preferences"][UPDATER]["InstallStatus"][1].get<std::string>(), HasSubstr("open"));
    EXPECT_EQ(found["finder"]["Corvane"].get<std::string>().substr(16, 4), "0400");

    const auto expectNotStored = [&] {
        const ProcessResult denied = user.runHost(arguments);
        EXPECT_EQ(denied.exitStatus, 7);
        EXPECT_THAT(denied.out, HasSubstr("  not stored: /Applications/Corvane: Permission denied\n"));
    };
    if (isRoot) {
        ASSERT_EQ(chown((root / "Applications/Corvane").c_str(), 0, 0), 0);
        expectNotStored();
    }
    // The link leads to where nobody but root may look.
    fs::create_directory(root / "Library/closed");
    if (isRoot) {
        ASSERT_EQ(chown((root / "Library/closed").c_str(), 65534, 65534), 0);
    }
    fs::permissions(root / "Library/closed", fs::perms::none);
    fs::remove_all(root / "Applications/Corvane");
    fs::create_symlink("/Library/closed/inside", root / "Applications/Corvane");
    expectNotStored();

    arguments.emplace_back("--dry-run");
    const ProcessResult refused = user.runHost(arguments);
    EXPECT_EQ(refused.exitStatus, 6) << "a dry run cannot copy what its user may not read";
    EXPECT_THAT(refused.err, HasSubstr("': reading it failed: Permission denied\n"));
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
    const std::string inTheWay = "  not stored: /Library/Preferences/com.corvane.updater.plist: ";
    expectInReport(7, inTheWay);
    fs::create_directories(fs::path(root.statusPath()).parent_path());
    ASSERT_EQ(mkfifo(root.statusPath().c_str(), 0600), 0);
    const ProcessResult hanging = install(root, {"--timeout=1"});
    EXPECT_EQ(hanging.exitStatus, 9);
    EXPECT_THAT(hanging.out, HasSubstr(inTheWay)) << "the first step's, although the second one does not end";
    fs::remove(root.statusPath());

    fs::remove_all(root.preferenceFile(UPDATER));
    const std::string damaged = "bplist00 and then nothing of the kind";
    writeFile(root.preferenceFile(UPDATER), damaged);
    expectInReport(0, "->\n      /Library/Preferences/com.corvane.updater.plist.corrupt-1\n");
    EXPECT_EQ(readFile(root.preferenceFile(UPDATER) + ".corrupt-1"), damaged);
    EXPECT_EQ(readRoot(root.path())["preferences"][UPDATER].size(), 2U);

    writeFile(root.preferenceFile("com.others"), "not the plug-in's business");
    expectInReport(0, "/Library/Preferences/com.others.plist cannot be read");

    writeFile(root / "Applications/Corvane", "no folder");
    expectInReport(0, "/Applications/Corvane/Icon\\r    does not exist");

    fs::remove(root / "Applications/Corvane");
    root.makeVendorFolder();
    setFinderInfo(root / "Applications/Corvane", "short");
    expectInReport(7, "the Finder flags of /Applications/Corvane cannot be read");
}

TEST(Report, ThatCannotBePrintedIsAnExitStatus) {
    const InstallRoot root;
    const std::vector<std::string> commands[] = {
        {"--version"},
        {"show", "--format=json", "--root", root.path()},
        {"run", "--product=5100", "--root", root.path(), PLUGIN_BUNDLE},
        {"run", "--product=5100", "--format=json", "--root=/nonexistent", PLUGIN_BUNDLE},
    };
    for (const std::vector<std::string>& arguments : commands) {
        std::vector<std::string> command{"sh", "-c", "exec \"$@\" >/dev/full", "sh", HOST_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const ProcessResult result = run(command);
        EXPECT_EQ(result.exitStatus, 7) << arguments.back();
        EXPECT_THAT(result.err, HasSubstr("the report could not be written to standard output"));
    }
    EXPECT_EQ(readRoot(root.path())["preferences"][UPDATER]["UpdateInterval"], json({"int", 2})) << "the run is done";
}

}  // namespace
