#include <filesystem>
#include <map>
#include <sstream>

#include "tests/installer-host/HostSupport.h"
#include "tests/support/KilledCommand.h"
#include "tests/support/Test.h"

namespace {

using namespace test;
using nlohmann::json;

/// A place for what the program writes for a while, and what it left there.
class Temporary {
public:
    ProcessResult matrix(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "matrix");
        ProcessOptions options;
        options.set = {{"TMPDIR", folder_.path()}};
        ProcessResult result = runHost(arguments, options);
        EXPECT_TRUE(fs::is_empty(folder_.path())) << "a temporary root was left behind";
        return result;
    }
    const std::string& path() const { return folder_.path(); }

private:
    TempDir folder_;
};

/// The report without what differs from run to run.
json steady(json report) {
    for (const char* name : {"started", "milliseconds", "slow", "modified"}) {
        report.erase(name);
    }
    for (json& member : report) {
        if (member.is_object()) {
            member = steady(member);
        } else if (member.is_array()) {
            std::transform(member.begin(), member.end(), member.begin(),
                           [](const json& inner) { return inner.is_object() ? steady(inner) : inner; });
        }
    }
    return report;
}

/// How many things were being done at once, as the log tells. A run does one after the other.
int mostAtOnce(const std::string& log) {
    std::istringstream lines(readFile(log));
    int now = 0, most = 0;
    for (std::string time, id, kind, rest; lines >> time >> id >> kind && std::getline(lines, rest);) {
        now += kind == "begins" ? 1 : kind == "ends" ? -1 : 0;
        most = std::max(most, now);
    }
    return most;
}

TEST(Matrix, GivesTheSameReportWithOneJobAndWithMany) {
    const InstallRoot root;
    root.makeVendorFolder();
    root.writeStatus("UpdatesDisabled\n");
    const TempDir folder;
    writeFile(folder / "UpdatesEnabled.txt", "UpdatesEnabled, and more");
    const std::string before = readRoot(root.path()).dump();
    const auto reportOf = [&](const std::string& jobs) {
        const ProcessResult result =
            Temporary().matrix({"--product=3100,5100", "--language=0-1,11", "--root", root.path(),
                                "--status=on,off,none,as-is," + folder / "UpdatesEnabled.txt", "--format=json",
                                "--log=" + folder / "log" + jobs, "--jobs=" + jobs, PLUGIN_BUNDLE});
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        return json::parse(result.out);
    };
    const json one = reportOf("1"), eight = reportOf("8");
    EXPECT_EQ(json::diff(steady(one), steady(eight)), json::array());
    EXPECT_EQ(mostAtOnce(folder / "log1"), 1);
    EXPECT_GT(mostAtOnce(folder / "log8"), 1);
    EXPECT_EQ(readRoot(root.path()).dump(), before);
    EXPECT_EQ(readFile(root.statusPath()), "UpdatesDisabled\n");
    const std::vector<std::string> languages{"en", "fr", "ja"};
    const std::vector<int> intervals{2, 0, 2, 0, 2};
    ASSERT_EQ(one["cases"].size(), 30U);
    for (std::size_t i = 0; i < 30; ++i) {
        std::map<std::string, json> values;
        for (const json& key : one["cases"][i]["report"]["preferences"]) {
            values[key["key"]] = key["after"]["value"];
        }
        EXPECT_EQ(values["Lang"], languages[i / 5 % 3]) << one["cases"][i]["name"];
        EXPECT_EQ(values["UpdateInterval"], intervals[i % 5]) << one["cases"][i]["name"];
        EXPECT_EQ(values.count("InstalledProducts/Ambrel/CurrentVersion"), i / 15) << one["cases"][i]["name"];
    }
    EXPECT_EQ(one["cases"][29]["name"], "5100/11/UpdatesEnabled.txt");
    EXPECT_EQ(one["languages"][2]["passed"], 10);
}

/// What Python reads in a JUnit file: for each case its name and what became of it.
std::string readJUnit(const std::string& path) {
    return run({"python3", "-c", R"(
import sys, xml.etree.ElementTree as tree
for suite in tree.parse(sys.argv[1]).getroot():
    counts = [suite.get(name) for name in ("name", "tests", "failures", "errors", "skipped")]
    found = [case.get("name") + " " + " ".join(child.tag for child in case if "system" not in child.tag) for case in suite]
    print(*counts, *found, sep=";"))",
                path})
        .out;
}

/// One product fails, one crashes, one leaves a process behind.
TEST(Matrix, TellsWhatBecameOfEachCase) {
    const InstallRoot root;
    const TempDir folder;
    const std::string report = folder / "report.json", junit = folder / "junit.xml";
    writeFile(root / "Library/plugin-fault", "by product");
    const std::vector<std::string> arguments{"--product=1-4", "--step=pre", "--root",     root.path(),
                                             "--junit",       junit,        FAULTY_BUNDLE};
    const auto with = [&](std::vector<std::string> more) {
        more.insert(more.end(), arguments.begin(), arguments.end());
        return Temporary().matrix(more);
    };
    const ProcessResult text = with({});
    EXPECT_EQ(text.exitStatus, 5);
    EXPECT_THAT(text.err, HasSubstr("installer-host: 2 of 4 cases failed"));
    for (const char* part :
         {"\n  ok       1/0/as-is", "\n  FAILED   2/0/as-is", "\nFAILED 2/0/as-is, exit status 1\n",
          "  1        .  1/1\n", "\n  2        F  0/1\n", "\n         2/4  2/4\n",
          "\nProcesses that were left running, and ended\n  4/0/as-is: ", "\nFAILED 3/0/as-is, exit status 5\n",
          "\n    pre-install step  ended the process: signal 6",
          "\nIn all: 2 passed, 2 failed; something changed in 0.\n"}) {
        EXPECT_THAT(text.out, HasSubstr(part));
    }
    EXPECT_EQ(readJUnit(junit),
              "1;1;0;0;0;1/0/as-is properties\n2;1;1;0;0;2/0/as-is properties failure\n"
              "3;1;0;1;0;3/0/as-is properties error\n4;1;0;0;0;4/0/as-is properties\n");
    writeFile(report, with({"--format=json"}).out);
    const json again = json::parse(with({"--format=json", "--rerun", report}).out);
    ASSERT_EQ(again["cases"].size(), 2U);
    EXPECT_EQ(again["cases"][0]["name"], "2/0/as-is");
    EXPECT_EQ(again["exitStatus"], 5);
    const json shorter =
        json::parse(Temporary().matrix({"--format=json", "--rerun", report, "--step=post", FAULTY_BUNDLE}).out);
    EXPECT_EQ(shorter["cases"].size(), 2U);
    EXPECT_EQ(shorter["cases"][1]["report"]["steps"][0]["step"], "post");
}

TEST(Matrix, IsHeldToAnExpectation) {
    const TempDir folder;
    const std::string file = folder / "e.json", junit = folder / "junit.xml";
    const auto matrix = [&](const std::string& products, const std::string& option) {
        return Temporary().matrix({"--product", products, "--language=0,1", "--status=on,off", option, file, "--junit",
                                   junit, "--format=json", PLUGIN_BUNDLE});
    };
    EXPECT_EQ(matrix("5100,7700", "--write-expect").exitStatus, 0);
    EXPECT_EQ(matrix("5100,7700", "--expect").exitStatus, 0);
    EXPECT_THAT(install(InstallRoot(), {"--expect", file}).err, HasSubstr("is that of a matrix"));
    EXPECT_THAT(install(InstallRoot(), {"--expect", folder / "none"}).err, HasSubstr("cannot be read: No such file"));
    const ProcessResult fewer = matrix("5100", "--expect");
    EXPECT_EQ(fewer.exitStatus, 8);
    EXPECT_EQ(json::parse(fewer.out)["expectation"]["unused"].size(), 4U);
    EXPECT_THAT(readJUnit(junit), HasSubstr("expectation;4;4;0;0;7700/0/on failure;"));
    const json more = json::parse(matrix("5100,7700,4900", "--expect").out);
    EXPECT_EQ(more["counts"]["failed"], 4);
    EXPECT_EQ(more["cases"][8]["report"]["expectation"]["differences"][0]["text"], "nothing is expected of 4900/0/on");
    std::string text = readFile(file);
    const std::size_t place = text.find("\"Lang\": \"fr\"");
    ASSERT_NE(place, std::string::npos);
    writeFile(file, text.replace(place, 12, "\"Lang\": \"de\""));
    const json other = json::parse(matrix("5100,7700", "--expect").out);
    EXPECT_EQ(other["exitStatus"], 8);
    EXPECT_EQ(other["counts"]["failed"], 2);
    EXPECT_EQ(other["cases"][2]["report"]["expectation"]["differences"][0]["text"],
              R"(com.corvane.audioplugins.Ambrel: "Lang": expected "de" (string), found "fr" (string))");
}

/// A file for an expectation is never reached through a link, and a fault that is expected is none.
TEST(Run, IsHeldToAnExpectation) {
    const InstallRoot root, copy;
    const TempDir folder;
    const std::string file = folder / "e.json";
    fs::create_symlink(folder / "elsewhere", folder / "link");
    const std::vector<std::string> wrongBlock{"--block-version=1", "--write-expect", folder / "link"};
    const ProcessResult refused = install(root, wrongBlock);
    EXPECT_EQ(refused.exitStatus, 7);
    EXPECT_THAT(refused.err, HasSubstr("link' could not be written: it is a link"));
    EXPECT_FALSE(fs::exists(folder / "elsewhere"));
    EXPECT_EQ(install(root, {"--block-version=1", "--write-expect", file}).exitStatus, 1);
    EXPECT_EQ(install(root, {"--block-version=1", "--expect", file}).exitStatus, 0);
    const ProcessResult better = install(root, {"--expect", file});
    EXPECT_EQ(better.exitStatus, 8);
    EXPECT_THAT(better.out, HasSubstr("  ! exit status: expected 1, found 0\n"));
    writeFile(folder / "report.json", install(copy, {"--format=json"}).out);
    writeFile(folder / "keys.json",
              R"({"preferences": {"com.corvane.updater": {"UpdateInterval": 2, "Other": null}}})");
    EXPECT_EQ(install(root, {"--step=post", "--expect", folder / "keys.json"}).exitStatus, 0);
    EXPECT_EQ(install(root, {"--expect", folder / "report.json"}).exitStatus, 8);
    EXPECT_EQ(install(InstallRoot(), {"--expect", folder / "report.json"}).exitStatus, 0);
    EXPECT_EQ(install(copy, {"-v", "--write-expect", file}).exitStatus, 0);
    EXPECT_THAT(readFile(file), testing::Not(HasSubstr("corvane"))) << "keys that stay, and times, are no changes";
}

/// A file that takes another one's place is whole, has its mode, and leaves nothing beside it.
TEST(WriteExpect, ReplacesAFile) {
    const InstallRoot root;
    const TempDir folder;
    const std::string file = folder / "e.json";
    const std::vector<std::string> command{HOST_PROGRAM,     "run", "--product=1", "--root", root.path(),
                                           "--write-expect", file,  PLUGIN_BUNDLE};
    for (const bool isNew : {true, false}) {
        EXPECT_TRUE(flushesEachChange(command, "installer-host"));
        writeFile(folder / "usual", "");
        EXPECT_EQ(fs::status(file).permissions(), isNew ? fs::status(folder / "usual").permissions() : fs::perms(0640));
        fs::remove(folder / "usual");
        fs::permissions(file, fs::perms(0640));
    }
    const ProcessResult full = run({"sh", "-c", "trap '' XFSZ; ulimit -f 1; \"$@\"", "sh", HOST_PROGRAM, "matrix",
                                    "--product=1-9", "--junit", file, PLUGIN_BUNDLE});
    EXPECT_THAT(full.err, HasSubstr("e.json' could not be written: File too large"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);
}

/// Whoever ends a matrix gets a report of what was done, and no root is left.
TEST(Matrix, CanBeEnded) {
    for (const std::string signal : {"INT", "TERM"}) {
        const InstallRoot root;
        const TempDir folder, files;
        const std::string expectation = files / "e.json";
        writeFile(root / "Library/plugin-fault", "by product");
        const ProcessResult result = kept(run({"env",
                                               "TMPDIR=" + folder.path(),
                                               "timeout",
                                               "--foreground",
                                               "--preserve-status",
                                               "-s",
                                               signal,
                                               "2",
                                               HOST_PROGRAM,
                                               "matrix",
                                               "--product=1,5",
                                               "--language=0-1",
                                               "--step=pre",
                                               "--jobs=2",
                                               "--timeout=0",
                                               "--format=json",
                                               "--root",
                                               root.path(),
                                               "--write-expect",
                                               expectation,
                                               FAULTY_BUNDLE}));
        EXPECT_EQ(result.exitStatus, signal == "INT" ? 130 : 143) << result.err;
        const json report = json::parse(result.out);
        EXPECT_EQ(report["counts"]["failed"], 0);
        EXPECT_GE(report["counts"]["notRun"], 2);
        EXPECT_TRUE(fs::is_empty(folder.path()));
        EXPECT_FALSE(fs::exists(expectation)) << "what was cut short is not what is expected";
    }
}

}  // namespace
