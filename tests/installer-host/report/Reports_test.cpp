#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "installer-host/report/JsonReport.h"
#include "installer-host/report/Text.h"
#include "installer-host/report/TextReport.h"
#include "tests/support/TempDir.h"

namespace {

using namespace host;
using nlohmann::json;
using testing::HasSubstr;

TEST(Reports, ShowEveryTypeOfValue) {
    const test::TempDir folder;
    test::writeFile(folder / "Library/Preferences/d.plist",
                    "<plist><dict>"
                    "<key>s</key><string>a \"quoted\" \xC3\xA9\n</string><key>i</key><integer>-2</integer>"
                    "<key>u</key><integer>18446744073709551615</integer><key>r</key><real>1.5</real><key>b</key><true/>"
                    "<key>d</key><date>2026-01-02T03:04:05Z</date><key>x</key><data>AP8=</data>"
                    "<key>l</key><array><integer>1</integer><string>a</string></array>"
                    "<key>m</key><dict><key>k</key><false/></dict></dict></plist>");
    const Snapshot snapshot = takeSnapshot(RootFolder(folder.path()));
    EXPECT_THAT(showText(snapshot, ""), HasSubstr(R"(
  d
    "b" = true (boolean)
    "d" = 2026-01-02T03:04:05Z (date)
    "i" = -2 (integer)
    "l" = [1, "a"] (array)
    "m" = {"k": false} (dictionary)
    "r" = 1.5 (real)
    "s" = "a \"quoted\" )"
                                                  "\xC3\xA9"
                                                  R"(\n" (string)
    "u" = 18446744073709551615 (integer)
    "x" = <00ff> (data)
)"));
    const json report = json::parse(showJson(snapshot, ""));
    EXPECT_EQ(report["schema"], 1);
    const json& keys = report["domains"][0]["keys"];
    EXPECT_EQ(keys["i"], json({{"type", "integer"}, {"value", -2}}));
    EXPECT_EQ(keys["x"], json({{"type", "data"}, {"value", "00ff"}}));
    EXPECT_EQ(keys["m"]["value"]["k"]["type"], "boolean");
}

TEST(Reports, TellWhatChanged) {
    const TypedValue zero{{"type", "integer"}, {"value", 0}}, text{{"type", "string"}, {"value", "0"}};
    Result result;
    result.changes.preferences = {{"d", "Gone", Change::Removed, text, nullptr},
                                  {"d", "Interval", Change::Changed, zero, text},
                                  {"d", "New/key", Change::Added, nullptr, zero},
                                  {"e", "InstallStatus", Change::Unchanged, text, text},
                                  {"e", "Lang", Change::Unchanged, text, text}};
    result.changes.files = {{"e.plist.corrupt-1", Change::Added}, {"old\n", Change::Removed}};
    result.changes.unreadable = {{Unreadable::Kind::Older, "/a/list.plist", "it holds no dictionary"},
                                 {Unreadable::Kind::Finder, "/b\r", "closed"}};
    EXPECT_THAT(runText(result), HasSubstr(R"(
  d
    - "Gone" = "0" (string)
    ~ "Interval" = 0 (integer) -> "0" (string)
    + "New/key" = 0 (integer)
  e
      "InstallStatus" = "0" (string), unchanged: from an earlier run
      "Lang" = "0" (string), unchanged
  + file e.plist.corrupt-1
  - file old\n

Finder flags

Problems
  /a/list.plist cannot be read: it holds no dictionary
  the Finder flags of /b\r cannot be read: closed
)"));
}

TEST(Text, EscapesWhatIsNotPlain) {
    EXPECT_EQ(inQuotes("Icon\r"), "\"Icon\\r\"");
    EXPECT_EQ(inQuotes(std::string("\0\x1B\x7F\"\\", 5)), "\"\\x00\\x1b\\x7f\\\"\\\\\"");
    EXPECT_EQ(escaped("caf\xC3\xA9 \xF0\x9F\x98\x80"), "caf\xC3\xA9 \xF0\x9F\x98\x80");
    EXPECT_EQ(escaped("\xC3 \xED\xA0\x80 \xC0\x80 \xC2\x85"), "\\xc3 \\xed\\xa0\\x80 \\xc0\\x80 \\xc2\\x85");
}

}  // namespace
