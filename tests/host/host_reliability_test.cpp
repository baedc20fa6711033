#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <set>

#include "tests/host/HostSupport.h"

namespace {

using namespace test;
using nlohmann::json;
using testing::HasSubstr;

namespace fs = std::filesystem;

constexpr const char* UPDATER = "com.corvane.updater";

json keysOf(const InstallRoot& root, const char* domain = UPDATER) {
    return readRoot(root.path())["preferences"].value(domain, json::object());
}

struct StatusCase {
    const char* name;
    std::function<void(const InstallRoot&)> make;
    int updateInterval;
    const char* installStatus;  ///< what the failure's text contains; null for none
};

TEST(InstallStatus, IsReadWhateverItIs) {
    const auto bytes = [](const std::string& text) {
        return [text](const InstallRoot& root) { root.writeStatus(text); };
    };
    const auto sized = [](const std::string& size) {
        return [size](const InstallRoot& root) {
            root.writeStatus("UpdatesEnabled");
            run({"truncate", "-s", size, root.statusPath()});
        };
    };
    const StatusCase cases[] = {
        {"missing", [](const InstallRoot&) {}, 2, nullptr},
        {"a dangling link",
         [](const InstallRoot& root) {
             root.writeStatus("");
             fs::remove(root.statusPath());
             fs::create_symlink("nowhere", root.statusPath());
         },
         2, nullptr},
        {"enabled", bytes("UpdatesEnabled\n"), 2, nullptr},
        {"more text behind", bytes("UpdatesEnabledAndMore"), 2, nullptr},
        {"disabled", bytes("UpdatesDisabled"), 0, nullptr},
        {"lower case", bytes("updatesenabled"), 0, nullptr},
        {"13 bytes", bytes("UpdatesEnable"), 0, nullptr},
        {"empty", bytes(""), 0, nullptr},
        {"a byte order mark", bytes("\xEF\xBB\xBFUpdatesEnabled"), 0, nullptr},
        {"a zero byte inside", bytes(std::string("Updates\0Enabled", 15)), 0, nullptr},
        {"a zero byte behind", bytes(std::string("UpdatesEnabled\0\xFF", 16)), 2, nullptr},
        {"binary", bytes("\xFF\xFE\x80\x01 UpdatesEnabled"), 0, nullptr},
        {"1 MiB", sized("1M"), 2, nullptr},
        {"a folder", [](const InstallRoot& root) { fs::create_directories(root.statusPath()); }, 2,
         "only read 0 bytes"},
    };
    std::vector<std::unique_ptr<InstallRoot>> roots;
    std::vector<std::string> paths;
    for (const StatusCase& status : cases) {
        roots.push_back(std::make_unique<InstallRoot>());
        paths.push_back(roots.back()->path());
        status.make(*roots.back());
        const ProcessResult result = install(*roots.back(), {"--step=post"});
        EXPECT_EQ(result.exitStatus, 0) << status.name << result.err;
    }
    const std::vector<json> found = readRoots(paths);
    for (std::size_t i = 0; i < found.size(); ++i) {
        const StatusCase& status = cases[i];
        const json& preferences = found[i]["preferences"];
        const json& keys = preferences[UPDATER];
        EXPECT_EQ(keys["UpdateInterval"], json({"int", status.updateInterval})) << status.name;
        const std::string failure = keys.contains("InstallStatus") ? keys["InstallStatus"][1].get<std::string>() : "";
        EXPECT_EQ(failure.empty(), status.installStatus == nullptr) << status.name << ": " << failure;
        EXPECT_THAT(failure, HasSubstr(status.installStatus == nullptr ? "" : status.installStatus)) << status.name;
        EXPECT_TRUE(preferences.contains("com.corvane.audioplugins.Ambrel")) << status.name;
    }
}

TEST(InstallStatus, ThatNoMemoryHoldsEndsTheStep) {
    const InstallRoot root;
    root.writeStatus("UpdatesEnabled");
    ASSERT_EQ(run({"truncate", "-s", "4G", root.statusPath()}).exitStatus, 0);
    const ProcessResult result = install(root);
    EXPECT_EQ(result.exitStatus, 5);
    EXPECT_THAT(result.err, HasSubstr("std::bad_alloc left the post-install step"));
    EXPECT_EQ(readRoot(root.path())["preferences"].size(), 1U) << "the pre-install step's work stays";
}

TEST(InstallStatus, ThatNeverComesEndsAtTheTimeout) {
    const InstallRoot root;
    root.writeStatus("");
    fs::remove(root.statusPath());
    ASSERT_EQ(mkfifo(root.statusPath().c_str(), 0600), 0);
    const ProcessResult result = install(root, {"--timeout=1"});
    EXPECT_EQ(result.exitStatus, 9);
    EXPECT_THAT(result.err, HasSubstr("the bundle's code was in the post-install step"));
    EXPECT_THAT(result.out, HasSubstr("InstalledProducts/Ambrel/CurrentVersion"));
}

/// The whole program for an ordinary user, who may be unable to reach this build's folder.
TEST(OrdinaryUser, InstallsAndMeetsAnUnreadableStatusFile) {
    constexpr unsigned NOBODY = 65534;
    const InstallRoot root;
    root.makeVendorFolder();
    root.writeStatus("UpdatesDisabled");
    fs::permissions(root.statusPath(), fs::perms::none);
    const TempDir programs;
    const fs::path library = fs::path(HOST_PROGRAM).parent_path().parent_path() / "lib/libCvPlatform.so";
    fs::copy_file(HOST_PROGRAM, programs / "installer-host");
    fs::copy_file(library, programs / "libCvPlatform.so");
    fs::copy(PLUGIN_BUNDLE, programs / "Copy.bundle", fs::copy_options::recursive);
    ProcessOptions options;
    options.set = {{"LD_LIBRARY_PATH", programs.path()}};
    options.unset = {"DISPLAY"};
    if (geteuid() == 0) {
        options.user = NOBODY;
        for (const std::string& folder : {root.path(), programs.path()}) {
            ASSERT_EQ(run({"chown", "-R", "65534:65534", folder}).exitStatus, 0);
        }
    }
    const std::vector<std::string> command{programs / "installer-host", "run", "--product=5100", "--root", root.path(),
                                           programs / "Copy.bundle"};
    const ProcessResult result = run(command, options);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    const json found = readRoot(root.path());
    EXPECT_EQ(found["preferences"][UPDATER]["UpdateInterval"], json({"int", 2}));
    EXPECT_THAT(found["preferences"][UPDATER]["InstallStatus"][1].get<std::string>(), HasSubstr("open"));
    EXPECT_EQ(found["finder"]["/Applications/Corvane"].get<std::string>().substr(16, 4), "0400");

    if (geteuid() == 0) {
        ASSERT_EQ(run({"chown", "0:0", root / "Applications/Corvane"}).exitStatus, 0);
        const ProcessResult foreign = run(command, options);
        EXPECT_EQ(foreign.exitStatus, 7);
        EXPECT_THAT(foreign.out, HasSubstr("  not stored: /Applications/Corvane: Permission denied\n"));
    }

    // A dry run cannot copy what its user may not read, and says so.
    std::vector<std::string> dryRun = command;
    dryRun.emplace_back("--dry-run");
    const ProcessResult refused = run(dryRun, options);
    EXPECT_EQ(refused.exitStatus, 6);
    EXPECT_THAT(refused.err, HasSubstr("a faithful copy"));
}

/// The program is killed later and later, until it comes to its end. Whatever the moment, each file is the old one or
/// one of the new ones.
TEST(Killed, LeavesWholeFiles) {
    constexpr int STEPS = 30;
    constexpr int MOST_RUNS = 300;
    constexpr int KILLED = 128 + 9;
    const InstallRoot root;
    writeFile(root.preferenceFile(UPDATER), "<plist><dict><key>Old</key><string>kept</string></dict></plist>");
    const std::string old = readFile(root.preferenceFile(UPDATER));
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(install(root).exitStatus, 0);
    const std::chrono::duration<double> whole = std::chrono::steady_clock::now() - begin;

    const TempDir copies;
    std::vector<std::string> paths;
    for (int i = 1, ended = 0; ended < 3; ++i) {
        ASSERT_LT(i, MOST_RUNS);
        fs::remove_all(root / "Library/Preferences");
        writeFile(root.preferenceFile(UPDATER), old);
        const std::string moment = std::to_string(whole.count() * i / STEPS);
        const ProcessResult result = run({"timeout", "-s", "KILL", moment, HOST_PROGRAM, "run", "--product=5100",
                                          "--root", root.path(), PLUGIN_BUNDLE});
        ASSERT_THAT(result.exitStatus, testing::AnyOf(0, KILLED)) << result.err;
        ended += result.exitStatus == 0 ? 1 : 0;
        paths.push_back(copies / std::to_string(i));
        fs::create_directories(paths.back() + "/Library");
        fs::copy(root / "Library/Preferences", paths.back() + "/Library/Preferences");
    }
    std::set<std::size_t> seen;
    for (const json& found : readRoots(paths)) {
        const json& keys = found["preferences"][UPDATER];
        ASSERT_TRUE(keys.is_object()) << keys;
        EXPECT_EQ(keys["Old"], json({"str", "kept"}));
        const bool hasVersion = keys.contains("InstalledProducts/Ambrel/CurrentVersion");
        EXPECT_TRUE(hasVersion || !keys.contains("UpdateInterval")) << keys;
        seen.insert(keys.size());
    }
    EXPECT_THAT(seen, testing::IsSupersetOf({1U, 3U})) << "no run was killed before it stored anything";
    EXPECT_EQ(install(root).exitStatus, 0) << "what a killed run leaves does not hinder the next";
}

TEST(Together, HostsLoseNoKeys) {
    const std::vector<int> codes{6300, 3100, 5600, 3500, 5200, 5100, 7700, 5000, 4900};
    const InstallRoot root;
    std::string script = "for code in";
    for (const int code : codes) {
        script += " " + std::to_string(code);
    }
    script += R"(; do "$0" run --product=$code --root "$1" "$2" >/dev/null & all="$all $!"; done
                 for one in $all; do wait "$one" || exit 1; done)";
    const ProcessResult result = run({"sh", "-c", script, HOST_PROGRAM, root.path(), PLUGIN_BUNDLE});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(keysOf(root).size(), codes.size() + 1);
}

TEST(Corrupt, PreferencesAreMovedAsideAndTheRunGoesOn) {
    const InstallRoot root;
    const std::string damaged = "bplist00 and then nothing of the kind";
    writeFile(root.preferenceFile(UPDATER), damaged);
    const ProcessResult result = install(root);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("  + file com.corvane.updater.plist.corrupt-1\n"));
    EXPECT_EQ(readFile(root.preferenceFile(UPDATER) + ".corrupt-1"), damaged);
    EXPECT_EQ(keysOf(root).size(), 2U);
}

TEST(NotStored, IsAnExitStatusAndInTheReport) {
    const InstallRoot root;
    fs::create_directories(root.preferenceFile(UPDATER) + "/in the way");
    const ProcessResult result = install(root);
    EXPECT_EQ(result.exitStatus, 7);
    EXPECT_THAT(result.out, HasSubstr("  not stored: /Library/Preferences/com.corvane.updater.plist: "));
    EXPECT_THAT(result.out, HasSubstr("    + \"Lang\" = \"en\" (string)\n")) << "the rest is stored";

    const InstallRoot other;
    other.makeVendorFolder();
    writeFile(other.preferenceFile("com.others"), "not the plug-in's business");
    const ProcessResult foreign = install(other);
    EXPECT_EQ(foreign.exitStatus, 0) << foreign.err;
    EXPECT_THAT(foreign.out, HasSubstr("/Library/Preferences/com.others.plist cannot be read"));
    ASSERT_EQ(
        run({"setfattr", "-n", "user.com.apple.FinderInfo", "-v", "short", other / "Applications/Corvane"}).exitStatus,
        0);
    const ProcessResult flags = install(other);
    EXPECT_EQ(flags.exitStatus, 7);
    EXPECT_THAT(flags.out, HasSubstr("the Finder flags of /Applications/Corvane cannot be read"));
}

}  // namespace
