#include <gmock/gmock.h>
#include <csignal>

#include "tests/installer-host/HostSupport.h"

namespace {

using namespace test;
using nlohmann::json;

/// A root with what fixtures/ProbeStep.cpp changes, and `fault` for the plug-in.
void prepare(const InstallRoot& root, const std::string& fault) {
    writeFile(root / "Library/plugin-fault", fault);
    ProcessOptions inRoot;
    inRoot.workingFolder = root.path();
    const ProcessResult made = run({"sh", "-ec", R"(
mkdir -p Library/Preferences Library/gone Library/turned Applications/Some.app/Contents Applications/a/b/c
mkdir "Applications/old folder"
list() { echo "<plist><dict><key>Kept</key><true/>$1</dict></plist>"; }
list "<key>Turned</key><integer>1</integer><key>Old</key><data>AA==</data>" >Applications/Some.app/Contents/Info.plist
list >Library/Preferences/com.gone.plist
list >Library/Preferences/com.kept.plist
for file in gone/file contents mode attributes moved; do echo old >Library/$file; done
chmod 600 Library/mode
echo same >Library/rewritten
echo deep >Applications/a/b/c/deep
touch Applications/flags
ln -s old Library/gone/link
ln -s old Library/link
setfattr -n user.old -v 1 Library/attributes
setfattr -n user.other -v 1 Library/attributes)"},
                                   inRoot);
    ASSERT_EQ(made.exitStatus, 0) << made.err;
}

const char* const PREFERENCES = R"(
Preferences (+ added, ~ changed, - removed)
  /Applications/Some.app/Contents/Info.plist
    - "Old" = <00> (data)
    ~ "Turned" = 1 (integer) -> "1" (string)
  com.gone
    - "Kept" = true (boolean)
  com.probe
    + "Made" = 2026-01-02T03:04:05Z (date)
)";
const char* const FINDER_FLAGS = R"(
Finder flags
  /Applications/Corvane           does not exist
  /Applications/Corvane/Icon\r    does not exist
)";
const char* const NEW_FLAGS = "  /Applications/flags             0x0000 -> 0x4400 (invisible, custom icon)\n";
const char* const ENTRIES = R"(
Files and folders (+ created, ~ changed, - removed, > moved)
  ~ file /Applications/Some.app/Contents/Info.plist: contents 119 -> 86 bytes
  ~ file /Applications/flags: Finder flags
  + folder /Applications/new folder
  + link /Applications/new folder/link -> nowhere
  > folder /Applications/a -> /Applications/z
  ~ file /Applications/z/b/c/deep: contents 5 -> 7 bytes
  - file /Library/Preferences/com.gone.plist
  + file /Library/Preferences/com.probe.plist, 77 bytes
  ~ file /Library/attributes: attribute user.old removed, attribute user.other
      changed, attribute user.new added
  ~ file /Library/contents: contents 4 -> 19 bytes
  - folder /Library/gone
  - file /Library/gone/file
  - link /Library/gone/link
  ~ link /Library/link: target old -> new
  ~ file /Library/mode: mode 0600 -> 0640
  > file /Library/moved -> /Library/moved away
  + socket /Library/new\n\x1b[1msocket
  + FIFO /Library/new FIFO
  + file /Library/new file, 4 bytes
  + file /Library/new name, 19 bytes
  ~ file /Library/rewritten: contents or times (5 bytes before and after)
  ~ /Library/turned: folder -> file, 7 bytes
)";
const char* const SUM =
    "\nIn all: 7 created, 9 changed, 2 moved, 4 removed, 1 key added, 1 key changed, 2\n  keys removed.\n";

std::vector<std::string> command(const InstallRoot& root, const std::string& more) {
    return {"run", "--product=1", "--step=pre", "--root=" + root.path(), more, FAULTY_BUNDLE};
}

/// The report from the preferences on, without what the limits were.
std::string changesIn(const std::string& report) {
    std::string text = report.substr(std::min(report.find("\nPreferences ("), report.size()));
    const std::size_t limits = text.find("\nLimits\n");
    return limits == std::string::npos ? text : text.erase(limits, text.find("\nIn all") - limits);
}

TEST(Report, NamesEachChangeAndNothingElse) {
    const InstallRoot root, other;
    prepare(root, "probe");
    const ProcessResult dry = runHost(command(root, "--dry-run"));
    const ProcessResult result = runHost(command(root, "--changes-exit"));
    EXPECT_EQ(result.exitStatus, 10) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(changesIn(result.out), std::string(PREFERENCES) + FINDER_FLAGS + NEW_FLAGS + ENTRIES + SUM);
    EXPECT_EQ(changesIn(dry.out), changesIn(result.out)) << "a dry run's report differs from that of the run";

    prepare(other, "probe");
    const json report = json::parse(runHost(command(other, "--format=json")).out);
    EXPECT_EQ(report["counts"], json({{"created", 7},
                                      {"removed", 4},
                                      {"changed", 9},
                                      {"moved", 2},
                                      {"times", 0},
                                      {"keysAdded", 1},
                                      {"keysChanged", 1},
                                      {"keysRemoved", 2},
                                      {"finderFlags", 1},
                                      {"unreadable", 0},
                                      {"notStored", 0},
                                      {"alerts", 0}}));
    EXPECT_EQ(report["entries"].size(), 22U);
    EXPECT_EQ(report["preferences"].size(), 4U);
    EXPECT_EQ(report["changed"], true);
}

TEST(Report, OfARunThatDoesNothingNamesNothing) {
    const InstallRoot root;
    prepare(root, "");
    const std::string nothing = "  nothing changed\n";
    const ProcessResult result = runHost(command(root, "--changes-exit"));
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(changesIn(result.out), "\nPreferences (+ added, ~ changed, - removed)\n" + nothing + FINDER_FLAGS +
                                         "\nFiles and folders (+ created, ~ changed, - removed, > moved)\n" + nothing +
                                         "\nIn all: no step changed anything: the bundle may not know product 1.\n");
}

TEST(Report, OfAnInterruptedRunNamesWhatWasChangedUntilThen) {
    for (const std::string signal : {"INT", "TERM"}) {
        const InstallRoot root;
        prepare(root, "probe and hang");
        std::vector<std::string> interrupted{"timeout", "--preserve-status", "-s", signal, "2", HOST_PROGRAM};
        for (const std::string& argument : command(root, "--format=json")) {
            interrupted.push_back(argument);
        }
        const ProcessResult result = kept(run(interrupted));
        const int status = 128 + (signal == "INT" ? SIGINT : SIGTERM);
        EXPECT_EQ(result.exitStatus, status) << result.err;
        const json report = json::parse(result.out);
        EXPECT_EQ(report["entries"].size(), 22U);
        EXPECT_EQ(report["steps"][0]["outcome"], "interrupted");
        EXPECT_EQ(report["error"]["status"], status);
    }
}

}  // namespace
