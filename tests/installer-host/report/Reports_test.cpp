#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "installer-host/report/JsonReport.h"
#include "installer-host/report/Lines.h"
#include "installer-host/report/Paint.h"
#include "installer-host/report/ShowText.h"
#include "installer-host/report/Text.h"
#include "installer-host/report/TextReport.h"
#include "tests/support/TempDir.h"

namespace {

using namespace host;
using nlohmann::json;
using testing::EndsWith;
using testing::StartsWith;

/// The text with <NUMBERS> in place of each escape sequence of a colour.
std::string withMarks(const std::string& painted) {
    std::string text;
    bool isEscape = false;
    for (const char c : painted) {
        if (c == '\x1B') {
            text += '<';
            isEscape = true;
        } else if (isEscape && c == 'm') {
            text += '>';
            isEscape = false;
        } else if (!isEscape || c != '[') {
            text += c;
        }
    }
    return text;
}

TEST(Reports, ShowEveryTypeOfValueAndWhatCannotBeRead) {
    const test::TempDir root;
    const std::string folder = root / "Library/Preferences/";
    test::writeFile(folder + "inner/d.plist",
                    "<plist><dict>"
                    "<key>s</key><string>a \"quoted\"\n</string><key>i</key><integer>-2</integer>"
                    "<key>u</key><integer>18446744073709551615</integer><key>r</key><real>1.5</real><key>b</key><true/>"
                    "<key>d</key><date>2026-01-02T03:04:05Z</date><key>x</key><data>AP8=</data>"
                    "<key>l</key><array><integer>1</integer><string>a</string></array>"
                    "<key>m</key><dict><key>k</key><false/></dict></dict></plist>");
    test::writeFile(folder + "list.plist", "<plist><array/></plist>");
    test::writeFile(folder + "d.plist.corrupt-1", "");
    std::filesystem::create_symlink("/etc/passwd", folder + "out of the root.plist");
    ASSERT_EQ(mkfifo((folder + "fifo.plist").c_str(), 0600), 0);
    const Snapshot snapshot = takeSnapshot(RootFolder(root.path()));
    EXPECT_THAT(showText(snapshot, ""), StartsWith(R"(Preferences of this machine
  fifo cannot be read: it is not a file
  inner/d
    "b" = true (boolean)
    "d" = 2026-01-02T03:04:05Z (date)
    "i" = -2 (integer)
    "l" = [1, "a"] (array)
    "m" = {"k": false} (dictionary)
    "r" = 1.5 (real)
    "s" = "a \"quoted\"\n" (string)
    "u" = 18446744073709551615 (integer)
    "x" = <00ff> (data)
  list cannot be read: it holds no dictionary
  out of the root cannot be read: No such file or directory
  file d.plist.corrupt-1
)"));
    const json keys = json::parse(jsonText(showDocument(snapshot, "", {}, {})))["domains"][1]["keys"];
    EXPECT_EQ(keys["m"]["value"]["k"], json({{"type", "boolean"}, {"value", false}}));
}

TEST(Reports, TellWhatChanged) {
    const TypedValue zero{{"type", "integer"}, {"value", 0}}, text{{"type", "string"}, {"value", "0"}};
    RunResult result;
    result.steps = {{Step::PreInstall, StepResult::Outcome::Done, 0, 0, "", "", {}},
                    {Step::PostInstall, StepResult::Outcome::Done, 0, 1, "", "", {}}};
    result.steps.front().duration = std::chrono::milliseconds(12);
    result.alerts = {{"T", "a\nb", {"OK", "No"}, "No", "user"}, {"T", "c", {"OK"}, {}, ""}};
    result.changes.preferences = {{"/p/d", "d", "Gone", Change::Removed, text, nullptr},
                                  {"/p/d", "d", "Interval", Change::Changed, zero, text},
                                  {"/p/e", "", "InstallStatus", Change::Unchanged, text, text}};
    result.changes.finder = {{{"/b", true, "", 0}, {"/b", true, "", 0x0500}},
                             {{"/c", true, "", 0}, {"/c", false, "", 0}}};
    result.changes.unreadable = {{Unreadable::Kind::Older, "/a/list.plist", "it holds no dictionary"},
                                 {Unreadable::Kind::Finder, "/b\r", "closed"}};
    result.limits = {"512 MiB of memory"};
    EXPECT_THAT(runText(result), EndsWith(R"(
Steps
  pre-install step  done in 0.012 s; resultFlags 0x00000000, unchanged
  post-install step failed in 0.000 s; resultFlags 0x00000000 -> 0x00000001

Alerts
  "T": "a\nb"
    with "OK" "No", answered "No" by: user
  "T": "c"
    with "OK", not answered: the run ended first

Preferences (+ added, ~ changed, - removed)
  d
    - "Gone" = "0" (string)
    ~ "Interval" = 0 (integer) -> "0" (string)
  /p/e
      "InstallStatus" = "0" (string), unchanged: from an earlier run

Finder flags
  /b                              0x0000 -> 0x0500 (custom icon, inited)
  /c                              0x0000 -> does not exist

Files and folders (+ created, ~ changed, - removed, > moved)
  nothing changed

Problems
  /a/list.plist cannot be read: it holds no dictionary
  the Finder flags of /b\r cannot be read: closed

Limits
  512 MiB of memory

In all: no step changed anything.
)"));
}

TEST(Paint, FollowsTheSectionsOfAReport) {
    const std::string painted = paintedReport(R"(Steps
  pre-install step  done in 0.012 s
  post-install step ended the process: signal
      11

Preferences (+ added)
  + d
    + "a" = "a long
        text"
      "b" = 1
    ~ "- c" = 1

Finder flags
  /a    0x0000 -> 0x0400
  /b    0x0000

Files and folders (+ created)
  + file /a
  - file /b
  > file /c -> /d

Problems
  not stored: + x

In all: 1.
)");
    EXPECT_EQ(withMarks(painted), R"(<1>Steps<0>
  pre-install step  done in 0.012 s
  <1;31>post-install step ended the process: signal<0>
      <1;31>11<0>

<1>Preferences (+ added)<0>
  + d
    <32>+ "a" = "a long<0>
        <32>text"<0>
      "b" = 1
    <33>~ "- c" = 1<0>

<1>Finder flags<0>
  <33>/a    0x0000 -> 0x0400<0>
  /b    0x0000

<1>Files and folders (+ created)<0>
  <32>+ file /a<0>
  <31>- file /b<0>
  <36>> file /c -> /d<0>

<1>Problems<0>
  <1;31>not stored: + x<0>

In all: 1.
)");
}

TEST(Line, KeepsToTheWidth) {
    const std::string word(34, 'x'), path(100, 'p');
    EXPECT_EQ(Line(2).addWords("- " + word + " a " + word).add("caf\xC3\xA9 caf\xC3\xA9").add(path).text(),
              "  - " + word + " a " + word + "\n      caf\xC3\xA9 caf\xC3\xA9\n      " + path.substr(26) + "\n      " +
                  path.substr(74) + "\n");
}

TEST(Text, EscapesWhatIsNotPlain) {
    EXPECT_EQ(inQuotes(std::string("Icon\r\0\x1B\x7F\"\\", 10)), "\"Icon\\r\\x00\\x1b\\x7f\\\"\\\\\"");
    EXPECT_EQ(escaped("caf\xC3\xA9 \xF0\x9F\x98\x80"), "caf\xC3\xA9 \xF0\x9F\x98\x80");
    EXPECT_EQ(escaped("\xC3 \xED\xA0\x80 \xC0\x80 \xC2\x85"), "\\xc3 \\xed\\xa0\\x80 \\xc0\\x80 \\xc2\\x85");
}

}  // namespace
