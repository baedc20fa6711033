#include <gmock/gmock.h>

#include <filesystem>

#include "tests/installer-host/HostSupport.h"

namespace {

using namespace test;
using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace fs = std::filesystem;

/// Each product once, each language at least once: every line of the plug-in's tables.
TEST(Install, LeavesWhatTheProductAndTheLanguageNeed) {
    const struct {
        const char* product;
        const char* domain;
        const char* name;
        const char* language;
        const char* text;
        const char* entry;
    } cases[] = {
        {"6300", "com.corvane.audioplugins.Beatwell", "Beatwell", "0", "en", "table"},
        {"3100", "com.corvane.audioapps.Mender", "Corvane Mender", "1", "fr", "direct"},
        {"5600", "com.corvane.audioapps.Mender2", "Corvane Mender 2", "2", "de", "table"},
        {"3500", "com.corvane.audioplugins.Stratos4", "Stratos4", "3", "it", "direct"},
        {"5200", "com.corvane.audioplugins.Coffer", "Coffer", "6", "es", "table"},
        {"5100", "com.corvane.audioplugins.Ambrel", "Ambrel", "11", "ja", "direct"},
        {"7700", "com.corvane.audioplugins.AmbrelLite", "Ambrel Lite", "-1", "en", "table"},
        {"5000", "com.corvane.clarifier", "CLR", "1", "fr", "table"},
        {"4900", "com.corvane.audioplugins.Temper", "Temper", "2", "de", "table"},
    };
    const std::string head(16, '0'), tail(44, '0');
    const json flags{{"Corvane", head + "0400" + tail}, {"Icon\r", head + "4000" + tail}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.product);
        const InstallRoot root;
        root.makeVendorFolder();
        const ProcessResult result = runHost({"run", "--root", root.path(), "--product", c.product, "--language",
                                              c.language, "--entry", c.entry, PLUGIN_BUNDLE});
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_EQ(result.err, "");
        const std::string version = std::string("InstalledProducts/") + c.name + "/CurrentVersion";
        const json updater{{version, {"str", "1.00"}}, {"UpdateInterval", {"int", 2}}};
        const json preferences{{"com.corvane.updater", updater}, {c.domain, {{"Lang", {"str", c.text}}}}};
        EXPECT_EQ(readRoot(root.path()), json({{"preferences", preferences}, {"finder", flags}}));
    }
}

TEST(Install, WritesJsonWithStableKeys) {
    const InstallRoot root;
    root.makeVendorFolder();
    json expected = json::parse(R"({
        "schema": "2.1", "host": "1.0.0", "command": "run", "dryRun": false, "changed": true, "error": null,
        "bundleIdentifier": "com.corvane.installer.plugin", "bundleVersion": "1.0.0", "scope": [], "alerts": [],
        "product": 5100, "language": 0, "blockVersion": 1000, "entry": "table",
        "steps": [{"step": "post", "outcome": "done", "resultFlagsBefore": 0, "resultFlagsAfter": 0,
                   "fault": null, "faultMessage": null, "milliseconds": 0}],
        "counts": {"created": 3, "removed": 0, "changed": 2, "moved": 0, "times": 0, "keysAdded": 2, "keysChanged": 0,
                   "keysRemoved": 0, "finderFlags": 2, "unreadable": 0, "notStored": 0, "alerts": 0},
        "preferences": [
            {"path": "/Library/Preferences/com.corvane.audioplugins.Ambrel.plist",
             "domain": "com.corvane.audioplugins.Ambrel", "key": "Lang", "change": "added",
             "before": null, "after": {"type": "string", "value": "en"}, "note": null},
            {"path": "/Library/Preferences/com.corvane.updater.plist", "domain": "com.corvane.updater", "key": "UpdateInterval", "change": "added",
             "before": null, "after": {"type": "integer", "value": 2}, "note": null}],
        "finderFlags": [
            {"path": "/Applications/Corvane", "before": {"exists": true, "flags": 0, "problem": null},
             "after": {"exists": true, "flags": 1024, "problem": null}},
            {"path": "/Applications/Corvane/Icon\r", "before": {"exists": true, "flags": 0, "problem": null},
             "after": {"exists": true, "flags": 16384, "problem": null}}],
        "unreadable": [], "notStored": [], "exitStatus": 0})");
    expected["bundle"] = fs::canonical(PLUGIN_BUNDLE).string();
    expected["root"] = root.path();
    json report = json::parse(install(root, {"--format", "json", "--step", "post"}).out);
    report["steps"][0]["milliseconds"] = 0;
    for (const auto& [key, value] : expected.items()) {
        EXPECT_EQ(report[key], value) << key;
    }
    EXPECT_THAT(runHost({"show", "--root", root.path()}).out, HasSubstr("    \"Lang\" = \"en\" (string)\n"));
}

TEST(Install, SaysWhatIsMissing) {
    const TempDir folder;
    const std::string noBundle = folder / "No.bundle", noRoot = folder / "no-root";
    const struct {
        std::vector<std::string> arguments;
        int exitStatus;
        std::string message;
    } cases[] = {
        {{"run", "--product=5100", "--machine", noBundle},
         3,
         "no bundle at '" + noBundle + "': No such file or directory\n  'make'"},
        {{"check", folder.path()}, 3, "/Contents' cannot be read: No such file"},
        {{"run", "--product=5100", "--root", noRoot, PLUGIN_BUNDLE}, 6, "mkdir -p '" + noRoot + "'"},
        {{"show", "--root", noRoot}, 6, "mkdir -p '" + noRoot + "'"},
        {{"run"}, 2, "BUNDLE is required"},
    };
    for (const auto& c : cases) {
        const ProcessResult result = runHost(c.arguments);
        EXPECT_EQ(result.exitStatus, c.exitStatus) << c.message;
        EXPECT_THAT(result.err, HasSubstr(c.message));
        EXPECT_THAT(result.out, IsEmpty());
    }
    const std::string alone = folder / "bin/installer-host";
    fs::create_directory(folder / "bin");
    fs::copy_file(HOST_PROGRAM, alone);
    const ProcessResult unlinked = runHost({"run", "--product=5100", "--machine", UNLINKED_BUNDLE});
    EXPECT_EQ(unlinked.exitStatus, 3);
    EXPECT_THAT(unlinked.err, HasSubstr("installer-host: the code cannot be loaded: "));
    EXPECT_THAT(unlinked.err, HasSubstr("nobodyDefinesThis"));
    const ProcessResult withoutWorker = run({alone, "check", PLUGIN_BUNDLE});
    EXPECT_EQ(withoutWorker.exitStatus, 6);
    EXPECT_THAT(withoutWorker.err, HasSubstr("'" + folder / "libexec/installer-host-worker" + "': No such file"));
}

TEST(Install, SaysWhyNoPrivateRootCanBeMade) {
    const InstallRoot root;
    const auto expectRefusal = [](const ProcessResult& result, const char* message) {
        EXPECT_EQ(result.exitStatus, 6);
        EXPECT_THAT(result.err, HasSubstr(message));
    };
    ProcessOptions noPrograms;
    noPrograms.set = {{"PATH", root.path()}};
    expectRefusal(install(root, {}, noPrograms), "apt-get install bubblewrap");
    writeFile(root / "bwrap", "#!/bin/sh\necho 'bwrap: Unknown option --bind-fd' >&2\nexit 1\n");
    fs::permissions(root / "bwrap", fs::perms::owner_all);
    expectRefusal(install(root, {}, noPrograms), "bubblewrap (bwrap) is too old here: bwrap: Unknown option --bind-fd");

    // A sandbox in which nobody may make another one.
    expectRefusal(run({"bwrap", "--unshare-user", "--disable-userns", "--dev-bind", "/", "/", "--cap-drop", "ALL", "--",
                       HOST_PROGRAM, "run", "--product=5100", "--root", root.path(), PLUGIN_BUNDLE}),
                  "namespaces");

    fs::remove(root / "Library");
    fs::create_directory_symlink("/usr", root / "Library");
    expectRefusal(install(root), "/Library' is not a folder");
}

TEST(Install, MakesTheRootsFoldersAndLeavesTheRestOfTheMachineAlone) {
    const TempDir root;
    writeFile(root / "Library/plugin-fault", "intruder");
    const ProcessResult result = runHost({"run", "--product=1", "--step=pre", "--root", root.path(), FAULTY_BUNDLE});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    for (const char* folder : {"/", "/etc", "/usr"}) {
        EXPECT_THAT(result.err, HasSubstr(std::string(folder) + ": Read-only file system\n"));
    }
    EXPECT_THAT(result.err, HasSubstr("/var: No such file or directory\n"));
    EXPECT_THAT(result.err, HasSubstr("/Library: written\n"));
    EXPECT_TRUE(fs::exists(root / "Library/installer-host-intruder"));
    EXPECT_THAT(result.out, Not(HasSubstr("written"))) << "standard output is for the report alone";
}

/// A root that a script as the step works on.
struct ScriptRoot {
    explicit ScriptRoot(const std::string& script) {
        EXPECT_EQ(run({"cp", "-rL", FAULTY_BUNDLE, folder / "Faulty.bundle"}).exitStatus, 0);
        writeFile(folder / "Library/plugin-fault", "script");
        writeFile(folder / "Library/script", script);
    }

    std::vector<std::string> arguments() const {
        return {"run", "--product=1", "--step=pre", "--root", folder.path(), folder / "Faulty.bundle"};
    }

    TempDir folder;
};

TEST(Install, LetsTheBundlesCodeUseTheDevices) {
    const ScriptRoot root(
        "echo nothing >/dev/null </dev/null\n"
        "for name in zero full random urandom; do test $(head -c 8 /dev/$name | wc -c) = 8; done\n"
        "if echo too much 2>/dev/null >/dev/full; then exit 1; fi\n");
    const ProcessResult result = runHost(root.arguments());
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    const OrdinaryUser user;
    user.own(root.folder.path());
    const ProcessResult users = user.runHost(root.arguments());
    EXPECT_EQ(users.exitStatus, 0) << users.err;
}

TEST(Install, DoesNotDependOnItsCallersRights) {
    const ScriptRoot root("echo made >/Library/made\n");
    const auto runAfter = [&](std::vector<std::string> command) {
        const std::vector<std::string> arguments = root.arguments();
        command.push_back(HOST_PROGRAM);
        command.insert(command.end(), arguments.begin(), arguments.end());
        return run(command);
    };
    const ProcessResult deaf = runAfter({"sh", "-c", "trap '' CHLD; exec \"$@\"", "sh"});
    EXPECT_EQ(deaf.exitStatus, 0) << "SIGCHLD is ignored: " << deaf.err;
    if (geteuid() == 0) {
        // Root may change another user's files by capabilities alone, which a user namespace takes away.
        run({"chown", "-R", "65534", root.folder.path()});
        const ProcessResult weak = runAfter({"setpriv", "--bounding-set=-sys_admin"});
        EXPECT_EQ(weak.exitStatus, 6) << "without CAP_SYS_ADMIN: " << weak.err;
    }
}

TEST(Check, FindsThePlugInComplete) {
    const ProcessResult result = runHost({"check", "--format=json", PLUGIN_BUNDLE});
    EXPECT_EQ(result.exitStatus, 0) << result.err << result.out;
    const json report = json::parse(result.out);
    EXPECT_EQ(report["ok"], true);
    EXPECT_EQ(report["findings"][0],
              json({{"subject", "bundle"}, {"ok", true}, {"text", "com.corvane.installer.plugin"}}));
}

}  // namespace
