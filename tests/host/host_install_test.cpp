#include <gmock/gmock.h>

#include <filesystem>
#include <memory>

#include "tests/host/HostSupport.h"

namespace {

using namespace test;
using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace fs = std::filesystem;

constexpr const char* UPDATER = "com.corvane.updater";

struct Product {
    int code;
    const char* domain;  ///< null for a code that no product has
    const char* name;
};

constexpr Product PRODUCTS[] = {{6300, "com.corvane.audioplugins.Beatwell", "Beatwell"},
                                {3100, "com.corvane.audioapps.Mender", "Corvane Mender"},
                                {5600, "com.corvane.audioapps.Mender2", "Corvane Mender 2"},
                                {3500, "com.corvane.audioplugins.Stratos4", "Stratos4"},
                                {5200, "com.corvane.audioplugins.Coffer", "Coffer"},
                                {5100, "com.corvane.audioplugins.Ambrel", "Ambrel"},
                                {7700, "com.corvane.audioplugins.AmbrelLite", "Ambrel Lite"},
                                {5000, "com.corvane.clarifier", "CLR"},
                                {4900, "com.corvane.audioplugins.Temper", "Temper"},
                                {4901, nullptr, nullptr}};

struct Language {
    int code;
    const char* text;
};

constexpr Language LANGUAGES[] = {{0, "en"}, {1, "fr"}, {2, "de"}, {3, "it"}, {6, "es"}, {11, "ja"}, {-1, "en"}};

/// The 32 bytes of Finder information, all zero but the high byte of the flags, in hexadecimal digits.
std::string finderInfo(const std::string& highByteOfFlags) {
    return std::string(16, '0') + highByteOfFlags + std::string(46, '0');
}

json preferencesAfter(const Product& product, const Language& language) {
    if (product.domain == nullptr) {
        return json::object();
    }
    const std::string versionKey = std::string("InstalledProducts/") + product.name + "/CurrentVersion";
    return {{UPDATER, {{versionKey, {"str", "1.00"}}, {"UpdateInterval", {"int", 2}}}},
            {product.domain, {{"Lang", {"str", language.text}}}}};
}

/// Each product is installed in each language into a root of its own; another program then reads what is there.
TEST(Install, LeavesWhatEachProductAndLanguageNeeds) {
    std::vector<std::unique_ptr<InstallRoot>> roots;
    std::vector<std::string> paths;
    for (const Product& product : PRODUCTS) {
        for (const Language& language : LANGUAGES) {
            roots.push_back(std::make_unique<InstallRoot>());
            roots.back()->makeVendorFolder();
            paths.push_back(roots.back()->path());
            const ProcessResult result =
                runHost({"run", "--root", paths.back(), "--product", std::to_string(product.code), "--language",
                         std::to_string(language.code), PLUGIN_BUNDLE});
            ASSERT_EQ(result.exitStatus, 0) << product.code << " " << language.code << "\n" << result.err;
            ASSERT_THAT(result.err, IsEmpty());
        }
    }
    const std::vector<json> found = readRoots(paths);
    const json flags{{"/Applications/Corvane", finderInfo("04")}, {"/Applications/Corvane/Icon\r", finderInfo("40")}};
    std::size_t i = 0;
    for (const Product& product : PRODUCTS) {
        for (const Language& language : LANGUAGES) {
            EXPECT_EQ(found[i]["preferences"], preferencesAfter(product, language)) << product.code << language.text;
            EXPECT_EQ(found[i]["finder"], flags) << product.code << language.text;
            ++i;
        }
    }
}

TEST(Install, ReportsWhatChanged) {
    InstallRoot root;
    root.makeVendorFolder();
    root.writeStatus("UpdatesEnabled\n");
    const ProcessResult result = install(root, {"--language", "1"});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    for (const char* line : {"pre-install step  done; resultFlags 0x00000000, unchanged\n",
                             "post-install step done; resultFlags 0x00000000, unchanged\n", "  com.corvane.updater\n",
                             "    + \"InstalledProducts/Ambrel/CurrentVersion\" = \"1.00\" (string)\n",
                             "    + \"UpdateInterval\" = 2 (integer)\n", "    + \"Lang\" = \"fr\" (string)\n",
                             "0x0000 -> 0x0400 (custom icon)\n", "0x0000 -> 0x4000 (invisible)\n"}) {
        EXPECT_THAT(result.out, HasSubstr(line));
    }
    const ProcessResult again = install(root, {"--language", "2"});
    EXPECT_THAT(again.out, HasSubstr("    ~ \"Lang\" = \"fr\" (string) -> \"de\" (string)\n"));
    EXPECT_THAT(again.out, HasSubstr("      \"UpdateInterval\" = 2 (integer), unchanged\n"));
    EXPECT_THAT(again.out, HasSubstr("0x0400 (custom icon), unchanged\n"));

    const ProcessResult shown = runHost({"show", "--root", root.path()});
    EXPECT_EQ(shown.exitStatus, 0) << shown.err;
    EXPECT_THAT(shown.out, AllOf(HasSubstr("    \"Lang\" = \"de\" (string)\n"),
                                 HasSubstr("/Applications/Corvane/Icon\\r    0x4000 (invisible)\n")));
}

TEST(Install, WritesJsonWithStableKeys) {
    InstallRoot root;
    root.makeVendorFolder();
    const json report = json::parse(install(root, {"--format", "json", "--step", "post"}).out);
    const json expected{{"schema", 1},
                        {"command", "run"},
                        {"bundle", fs::canonical(PLUGIN_BUNDLE).string()},
                        {"root", root.path()},
                        {"dryRun", false},
                        {"product", 5100},
                        {"language", 0},
                        {"blockVersion", 1000},
                        {"entry", "table"},
                        {"steps",
                         {{{"step", "post"},
                           {"outcome", "done"},
                           {"resultFlagsBefore", 0},
                           {"resultFlagsAfter", 0},
                           {"fault", nullptr},
                           {"faultMessage", nullptr}}}},
                        {"preferences",
                         {{{"domain", "com.corvane.audioplugins.Ambrel"},
                           {"key", "Lang"},
                           {"change", "added"},
                           {"before", nullptr},
                           {"after", {{"type", "string"}, {"value", "en"}}},
                           {"note", nullptr}},
                          {{"domain", UPDATER},
                           {"key", "UpdateInterval"},
                           {"change", "added"},
                           {"before", nullptr},
                           {"after", {{"type", "integer"}, {"value", 2}}},
                           {"note", nullptr}}}},
                        {"files", json::array()},
                        {"finderFlags",
                         {{{"path", "/Applications/Corvane"},
                           {"before", {{"exists", true}, {"flags", 0}, {"problem", nullptr}}},
                           {"after", {{"exists", true}, {"flags", 0x0400}, {"problem", nullptr}}}},
                          {{"path", "/Applications/Corvane/Icon\r"},
                           {"before", {{"exists", true}, {"flags", 0}, {"problem", nullptr}}},
                           {"after", {{"exists", true}, {"flags", 0x4000}, {"problem", nullptr}}}}}},
                        {"unreadable", json::array()},
                        {"notStored", json::array()},
                        {"exitStatus", 0}};
    EXPECT_EQ(report, expected);
}

TEST(Install, KeepsTheOtherFinderFlags) {
    InstallRoot root;
    root.makeVendorFolder();
    const std::string other = std::string(16, 'A') + "FFFF" + std::string(44, 'b');
    for (const char* path : {"Applications/Corvane", "Applications/Corvane/Icon\r"}) {
        ASSERT_EQ(run({"setfattr", "-n", "user.com.apple.FinderInfo", "-v", "0x" + other, root / path}).exitStatus, 0);
    }
    EXPECT_EQ(install(root).exitStatus, 0);
    const json found = readRoot(root.path())["finder"];
    const std::string head(16, 'a');
    const std::string tail(44, 'b');
    EXPECT_EQ(found["/Applications/Corvane"], head + "bfff" + tail);
    EXPECT_EQ(found["/Applications/Corvane/Icon\r"], head + "fbff" + tail);
}

TEST(Install, RefusesABlockOfAnotherVersion) {
    for (const char* step : {"pre", "post"}) {
        const InstallRoot root;
        root.makeVendorFolder();
        const ProcessResult table = install(root, {"--step", step, "--block-version", "999"});
        EXPECT_EQ(table.exitStatus, 1);
        EXPECT_THAT(table.out, HasSubstr("failed; resultFlags 0x00000000 -> 0x00000001\n"));
        EXPECT_THAT(table.err, Not(HasSubstr("Unable to set")));

        const ProcessResult direct = install(root, {"--step", step, "--block-version", "999", "--entry", "direct"});
        EXPECT_EQ(direct.exitStatus, 1);
        EXPECT_THAT(direct.err, HasSubstr("Unable to set post install option keys."));
        EXPECT_EQ(readRoot(root.path())["preferences"], json::object());
    }
}

TEST(Install, CallsTheExportedStepsDirectly) {
    const InstallRoot root;
    const ProcessResult result = install(root, {"--entry", "direct", "--language=11"});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(readRoot(root.path())["preferences"], preferencesAfter(PRODUCTS[5], {11, "ja"}));
}

TEST(Install, MakesTheRootsMissingFolders) {
    const TempDir root;
    const ProcessResult result = runHost({"run", "--product=5100", "--root", root.path(), PLUGIN_BUNDLE});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("/Applications/Corvane           does not exist\n"));
    EXPECT_TRUE(fs::is_directory(root / "Applications"));
}

TEST(Install, SaysWhatIsMissing) {
    const InstallRoot root;
    const TempDir other;
    const ProcessResult noBundle = runHost({"run", "--product=5100", "--root", root.path(), other / "No.bundle"});
    EXPECT_EQ(noBundle.exitStatus, 3);
    EXPECT_THAT(noBundle.err,
                AllOf(HasSubstr("there is no bundle at '" + other.path() + "/No.bundle'"), HasSubstr("make")));

    const ProcessResult noPropertyList = runHost({"check", other.path()});
    EXPECT_EQ(noPropertyList.exitStatus, 3);
    EXPECT_THAT(noPropertyList.err, HasSubstr("no file Contents/Info.plist"));

    for (const char* command : {"run", "show"}) {
        std::vector<std::string> arguments{command, "--root", other / "no-root"};
        if (std::string(command) == "run") {
            arguments.insert(arguments.end(), {"--product=5100", PLUGIN_BUNDLE});
        }
        const ProcessResult noRoot = runHost(arguments);
        EXPECT_EQ(noRoot.exitStatus, 6);
        EXPECT_THAT(noRoot.err, HasSubstr("mkdir -p '" + other.path() + "/no-root'"));
        EXPECT_THAT(noRoot.out, IsEmpty());
    }
    EXPECT_EQ(runHost({"run"}).exitStatus, 2);
    EXPECT_EQ(runHost({"--help"}).exitStatus, 0);
    EXPECT_THAT(runHost({"--version"}).out, testing::StartsWith("installer-host "));
}

TEST(Install, SaysWhyNoPrivateRootCanBeMade) {
    const InstallRoot root;
    ProcessOptions noPrograms;
    noPrograms.set = {{"PATH", root.path()}};
    const ProcessResult missing = install(root, {}, noPrograms);
    EXPECT_EQ(missing.exitStatus, 6);
    EXPECT_THAT(missing.err, HasSubstr("apt-get install bubblewrap"));

    // A sandbox in which nobody may make another one.
    const ProcessResult refused =
        run({"bwrap", "--unshare-user", "--disable-userns", "--dev-bind", "/", "/", "--cap-drop", "ALL", "--",
             HOST_PROGRAM, "run", "--product=5100", "--root", root.path(), PLUGIN_BUNDLE});
    EXPECT_EQ(refused.exitStatus, 6);
    EXPECT_THAT(refused.err, HasSubstr("namespaces"));

    fs::remove(root / "Library");
    fs::create_directory_symlink("/usr", root / "Library");
    const ProcessResult link = install(root);
    EXPECT_EQ(link.exitStatus, 6);
    EXPECT_THAT(link.err, HasSubstr("/Library' is no folder"));
}

TEST(Install, LeavesTheRestOfTheMachineAlone) {
    const InstallRoot root;
    ProcessOptions options;
    options.set = {{"PLUGIN_FAULT", "intruder"}};
    const ProcessResult result =
        runHost({"run", "--product=1", "--step=pre", "--root", root.path(), FAULTY_BUNDLE}, options);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    for (const char* folder : {"/", "/etc", "/tmp", "/usr", "/var"}) {
        EXPECT_THAT(result.err, HasSubstr(std::string(folder) + ": Read-only file system\n"));
    }
    EXPECT_THAT(result.err, HasSubstr("/Library: written\n"));
    EXPECT_THAT(result.out, Not(HasSubstr("written"))) << "standard output is for the report alone";

    root.makeVendorFolder();
    EXPECT_EQ(install(root).exitStatus, 0);
    const std::vector<std::string> files = readRoot(root.path())["files"];
    for (const std::string& file : files) {
        EXPECT_TRUE(file.rfind("Library", 0) == 0 || file.rfind("Applications", 0) == 0) << file;
    }
}

TEST(Check, FindsThePlugInComplete) {
    const ProcessResult result = runHost({"check", PLUGIN_BUNDLE});
    EXPECT_EQ(result.exitStatus, 0) << result.err << result.out;
    for (const char* line : {"ok      registration  factory ", "ok      exports       g_cvPluginID\n",
                             "ok      exports       no other names\n", "ok      identifiers   g_cvPluginID is 0\n",
                             "ok      interface     an unknown interface is refused\n",
                             "ok      interface     references are counted: 2, 1, 0\n"}) {
        EXPECT_THAT(result.out, HasSubstr(line));
    }
    const json report = json::parse(runHost({"check", "--format=json", PLUGIN_BUNDLE}).out);
    EXPECT_EQ(report["schema"], 1);
    EXPECT_EQ(report["ok"], true);
    EXPECT_EQ(report["findings"][0],
              json({{"subject", "bundle"}, {"ok", true}, {"text", "com.corvane.installer.plugin"}}));
}

}  // namespace
