#include <gmock/gmock.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

#include "tests/installer-host/HostSupport.h"

namespace {

using namespace test;
using testing::HasSubstr;
using testing::SizeIs;

using Strings = std::vector<std::string>;

/// A root whose preference domain `name` holds these keys, in XML.
void writeDomain(const InstallRoot& root, const std::string& name, const std::string& keys) {
    writeFile(root.preferenceFile(name), "<plist><dict>" + keys + "</dict></plist>");
}

struct ShowCase {
    Strings arguments;
    int exitStatus;
    std::string out;
};

TEST(Show, PrintsWhatIsAskedFor) {
    const InstallRoot root, other;
    writeDomain(root, "d",
                "<key>a/b</key><string>flat</string><key>a</key><dict><key>b</key><true/><key>c/d</key><real>0.5</real>"
                "</dict><key>l</key><array><data>AP8=</data><date>2026-01-02T03:04:05Z</date></array>"
                "<key>t</key><string>two\n\"lines\" \\</string>");
    writeDomain(other, "d", "<key>a/b</key><integer>1</integer><key>l</key><array/>");
    writeFile(root.preferenceFile("broken"), "?");
    writeDomain(other, "broken", "<key>a</key><true/>");
    writeFile(other.preferenceFile("worse"), "?");
    other.makeVendorFolder();
    setFinderInfo(other / "Applications/Corvane", "0x" + std::string(16, '0') + "0400" + std::string(44, '0'));
    setFinderInfo(other / "Applications/Corvane/Icon\r", "short");
    const std::string diff =
        "Differences between the private root " + root.path() + " and the private\n  root " + other.path();
    const ShowCase cases[] = {
        {{"--domain=d", "--key=a/b"}, 0, "flat\n"},
        {{"--domain=d", "--key=a"}, 0, "{\"b\":true,\"c/d\":0.5}\n"},
        {{"--domain=d", "--key=a/c/d"}, 0, "0.5\n"},
        {{"--domain=d", "--key=a/c"}, 11, ""},
        {{"--domain=d", "--key=l"}, 0, "[\"00ff\",\"2026-01-02T03:04:05Z\"]\n"},
        {{"--domain=d", "--key=l/1"}, 0, "2026-01-02T03:04:05Z\n"},
        {{"--domain=d", "--key=l/2"}, 11, ""},
        {{"--domain=d", "--key=t"}, 0, "two\n\"lines\" \\\n"},
        {{"--domain=d", "--key=t", "--quiet"}, 0, ""},
        {{"--domain=d", "--key=none", "-q"}, 11, ""},
        {{"--domain=none"}, 11, ""},
        {{"--domain=broken", "--key=a"}, 7, ""},
        {{"--diff", root.path(), "--domain=d"}, 0, "\n  nothing differs\n"},
        {{"--diff", other.path(), "--domain=d", "--key=a/b"}, 10, "    ~ \"a/b\" = \"flat\" (string) -> 1 (integer)\n"},
        {{"--diff", other.path(), "--domain=d"}, 10, "    - \"t\" = \"two\\n\\\"lines\\\" \\\\\" (string)\n"},
        {{"--diff", other.path()},
         7,
         "  /Applications/Corvane           does not exist -> 0x0400 (custom icon)\n\nProblems"},
        {{"--diff", other.path()}, 7, "broken.plist cannot be read"},
        {{"--diff", other.path(), "--domain=broken"}, 7, "in the first)\n  nothing differs\n"},
        {{"--diff", other.path(), "--domain=worse"}, 7, "worse.plist cannot be read"},
        {{"--diff", "/"}, 2, ""},
    };
    for (const ShowCase& c : cases) {
        Strings arguments{"show", "--root", root.path()};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        const ProcessResult text = runHost(arguments);
        const bool isDiff = c.arguments.front() == "--diff";
        EXPECT_EQ(text.exitStatus, c.exitStatus) << c.arguments.back() << text.err;
        EXPECT_TRUE(isDiff ? text.out.find(c.out) != std::string::npos : text.out == c.out) << text.out;
        EXPECT_EQ(text.err.empty(), c.exitStatus == 0 || c.exitStatus == 10) << c.arguments.back() << text.err;
        arguments.emplace_back("--format=json");
        EXPECT_EQ(nlohmann::json::parse(runHost(arguments).out)["exitStatus"], c.exitStatus) << c.arguments.back();
    }
}

TEST(Quiet, TellsOnlyWhatWentWrong) {
    const std::pair<const char*, std::string> cases[] = {
        {"echo said", ""},
        {"echo said; exit 1",
         "Steps\n  pre-install step  failed in .* s; resultFlags 0x00000000 -> 0x00000001\n"
         "\\| said\ninstaller-host: the pre-install step set the failure bit of resultFlags\n"},
    };
    for (const auto& [script, told] : cases) {
        const InstallRoot root;
        writeFile(root / "Library/plugin-fault", "script");
        writeFile(root / "Library/script", script);
        const ProcessResult result =
            runHost({"run", "-q", "--product=1", "--step=pre", "--root", root.path(), FAULTY_BUNDLE});
        EXPECT_TRUE(std::regex_match(result.out + result.err, std::regex(told))) << result.out << result.err;
    }
    EXPECT_THAT(runHost({"check", "-q", UNLINKED_BUNDLE}).out, testing::StartsWith("  failed  "));
}

Strings linesOf(const std::string& text) {
    std::istringstream in(text);
    Strings lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

TEST(Log, KeepsTheLinesOfManyRunsWhole) {
    constexpr int RUNS = 8;
    const InstallRoot root;
    const TempDir folder;
    writeFile(root / "Library/plugin-fault", "script");
    // Lines as long as a log gets to see, with what a terminal would obey.
    writeFile(root / "Library/script", "for i in 1 2 3 4 5; do printf '\\033%.0s' $(seq 900); echo; done");
    const ProcessResult all =
        run({"sh", "-c", "for i in $(seq " + std::to_string(RUNS) + "); do \"$@\" & done; wait", "sh", HOST_PROGRAM,
             "run", "-q", "--product=1", "--root=" + root.path(), "--log=" + folder / "log", FAULTY_BUNDLE});
    EXPECT_EQ(all.out + all.err, "");
    const std::regex form("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z ([0-9a-f]{16}) ([a-z-]+) (\\S.*)");
    const std::string output = std::regex_replace(std::string(900, 'x'), std::regex("x"), "\\x1b");
    std::set<std::string> runs;
    std::map<std::string, int> kinds;
    for (const std::string& line : linesOf(readFile(folder / "log"))) {
        std::smatch parts;
        ASSERT_TRUE(std::regex_match(line, parts, form)) << line;
        EXPECT_TRUE(parts[2] != "output" || parts[3] == output) << line;
        runs.insert(parts[1]);
        ++kinds[parts[2]];
    }
    EXPECT_THAT(runs, SizeIs(RUNS));
    EXPECT_EQ(kinds["starts"] + kinds["exits"] + kinds["output"], RUNS + RUNS + 2 * 5 * RUNS);
    EXPECT_EQ(kinds["begins"], kinds["ends"]);
}

TEST(Log, IsRefusedWhereItCannotBeOne) {
    const InstallRoot root;
    const TempDir folder;
    writeFile(folder / "file", "kept");
    std::filesystem::create_symlink(folder / "file", folder / "link");
    std::filesystem::create_hard_link(folder / "file", folder / "name");
    const std::tuple<std::string, int, const char*> cases[] = {
        {folder / "link", 6, "it is a symbolic link"}, {folder / "name", 6, "has another name"},
        {folder / "none/log", 6, "No such file"},      {folder.path(), 6, "Is a directory"},
        {"/dev/full", 6, "it is not a file"},          {root / "Library/log", 2, "lies in"},
    };
    for (const auto& [log, status, message] : cases) {
        const ProcessResult result = install(root, {"--log", log});
        EXPECT_EQ(result.exitStatus, status) << log;
        EXPECT_THAT(result.err, HasSubstr(message)) << log;
    }
    EXPECT_FALSE(std::filesystem::exists(root / "Library/Preferences"));
    // A disk that is full takes no part of a line; the run goes on.
    const ProcessResult full = run({"sh", "-c", "trap '' XFSZ; ulimit -f 2; \"$@\"", "sh", HOST_PROGRAM, "check",
                                    "--log", folder / "full", FAULTY_BUNDLE + std::string(700, '/')});
    EXPECT_THAT(full.err, HasSubstr("cannot be written any more: File too large")) << full.out;
    EXPECT_EQ(readFile(folder / "full").back(), '\n');
    // Whoever keeps the log locked gets no line into what he writes, and does not keep the run.
    const char* const lock = R"(
import fcntl, subprocess, sys
log = open(sys.argv[1], "w")
fcntl.lockf(log, fcntl.LOCK_EX)
sys.exit(subprocess.call(sys.argv[2:])))";
    const ProcessResult locked = run(
        {"python3", "-c", lock, folder / "locked", HOST_PROGRAM, "check", "--log", folder / "locked", FAULTY_BUNDLE});
    EXPECT_THAT(locked.err, HasSubstr("cannot be written any more: Resource temporarily unavailable"));
    EXPECT_EQ(readFile(folder / "locked"), "");
}

}  // namespace
