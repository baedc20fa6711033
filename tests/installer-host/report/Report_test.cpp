#include <fcntl.h>
#include <gmock/gmock.h>

#include <filesystem>

#include "installer-host/Result.h"
#include "installer-host/report/Text.h"
#include "installer-host/report/TextReport.h"
#include "tests/support/TempDir.h"

namespace {

using namespace host;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr const char* UPDATER = "/Library/Preferences/com.corvane.updater.plist";

/// A folder to be looked at as a root.
class ReportTest : public testing::Test {
protected:
    void store(const std::string& path, const std::string& dictionary) const {
        test::writeFile(folder_.path() + path, "<plist version=\"1.0\"><dict>" + dictionary + "</dict></plist>");
    }
    Snapshot look() const { return takeSnapshot(RootFolder(folder_.path())); }

    RunResult resultOf(const Snapshot& before, bool all = false) const {
        RunResult result;
        result.changes = compare(before, look(), all);
        return result;
    }

    test::TempDir folder_;
};

TEST_F(ReportTest, ShowsEveryTypeOfValue) {
    store(UPDATER,
          "<key>s</key><string>a \"quoted\" \xC3\xA9\n</string><key>i</key><integer>-2</integer>"
          "<key>u</key><integer>18446744073709551615</integer><key>r</key><real>1.5</real><key>b</key><true/>"
          "<key>d</key><date>2026-01-02T03:04:05Z</date><key>x</key><data>AP8=</data>"
          "<key>l</key><array><integer>1</integer><string>a</string></array>"
          "<key>m</key><dict><key>k</key><false/></dict>");
    const std::string text = showReport(look(), {});
    for (const char* line : {"\"s\" = \"a \\\"quoted\\\" \xC3\xA9\\n\" (string)", "\"i\" = -2 (integer)",
                             "\"u\" = 18446744073709551615 (integer)", "\"r\" = 1.5 (real)", "\"b\" = true (boolean)",
                             "\"d\" = 2026-01-02T03:04:05Z (date)", "\"x\" = <00ff> (data)",
                             "\"l\" = [1, \"a\"] (array)", "\"m\" = {\"k\": false} (dictionary)"}) {
        EXPECT_THAT(text, HasSubstr(line));
    }
    Options options;
    options.format = Format::Json;
    const json report = json::parse(showReport(look(), options));
    EXPECT_EQ(report["schema"], 1);
    const json& keys = report["domains"][0]["keys"];
    EXPECT_EQ(keys["i"], json({{"type", "integer"}, {"value", -2}}));
    EXPECT_EQ(keys["x"], json({{"type", "data"}, {"value", "00ff"}}));
    EXPECT_EQ(keys["m"]["value"]["k"]["type"], "boolean");
}

TEST_F(ReportTest, TellsAddedChangedRemovedAndOlderKeysApart) {
    store(UPDATER,
          "<key>Gone</key><string>x</string><key>Interval</key><integer>0</integer>"
          "<key>InstallStatus</key><string>old</string>");
    store("/Library/Preferences/com.other.plist", "<key>Left alone</key><true/>");
    const Snapshot before = look();
    store(UPDATER,
          "<key>Interval</key><string>0</string><key>New/key</key><real>1</real>"
          "<key>InstallStatus</key><string>old</string>");
    const std::string text = runReport(resultOf(before));
    EXPECT_THAT(text, HasSubstr("    - \"Gone\" = \"x\" (string)\n"));
    EXPECT_THAT(text, HasSubstr("    ~ \"Interval\" = 0 (integer) -> \"0\" (string)\n"));
    EXPECT_THAT(text, HasSubstr("    + \"New/key\" = 1.0 (real)\n"));
    EXPECT_THAT(text, HasSubstr("      \"InstallStatus\" = \"old\" (string), unchanged: from an earlier run\n"));
    EXPECT_THAT(text, Not(HasSubstr("Left alone")));
    EXPECT_THAT(runReport(resultOf(before, true)), HasSubstr("\"Left alone\" = true (boolean), unchanged\n"));
}

TEST_F(ReportTest, NamesWhatCannotBeRead) {
    test::writeFile(folder_.path() + UPDATER, "no property list");
    test::writeFile(folder_.path() + "/Library/Preferences/list.plist", "<plist><array/></plist>");
    std::filesystem::create_symlink("/etc/passwd", folder_.path() + "/Library/Preferences/link.plist");
    ASSERT_EQ(mkfifo((folder_.path() + "/Library/Preferences/fifo.plist").c_str(), 0600), 0);
    const Snapshot before = look();
    EXPECT_NE(before.domains.at("com.corvane.updater").problem, "");
    EXPECT_EQ(before.domains.at("list").problem, "it holds no dictionary");
    EXPECT_EQ(before.domains.at("fifo").problem, "it is no file");
    EXPECT_NE(before.domains.at("link").problem, "") << "a link must not lead out of the root";

    std::filesystem::rename(folder_.path() + UPDATER, folder_.path() + UPDATER + ".corrupt-1");
    const std::string text = runReport(resultOf(before));
    EXPECT_THAT(text, HasSubstr("  + file com.corvane.updater.plist.corrupt-1\n"));
    EXPECT_THAT(text, HasSubstr("/Library/Preferences/list.plist cannot be read: it holds no dictionary"));
}

TEST(Text, EscapesWhatIsNotPlain) {
    EXPECT_EQ(inQuotes("Icon\r"), "\"Icon\\r\"");
    EXPECT_EQ(inQuotes(std::string("\0\x1B\x7F\"\\", 5)), "\"\\x00\\x1b\\x7f\\\"\\\\\"");
    EXPECT_EQ(escaped("caf\xC3\xA9 \xF0\x9F\x98\x80"), "caf\xC3\xA9 \xF0\x9F\x98\x80");
    EXPECT_EQ(escaped("\xC3 \xED\xA0\x80 \xC0\x80 \xC2\x85"), "\\xc3 \\xed\\xa0\\x80 \\xc0\\x80 \\xc2\\x85");
}

}  // namespace
