// Alerts as a user meets them on a display of 800 by 600: what is told of them, and what keys, buttons and signals do.

#include "tests/UI/AlertUser.h"
#include "tests/support/Test.h"

namespace {

using namespace test;

const Strings OK{"OK"}, YES_NO{"Yes", "No"}, RETRY{"OK", "Cancel", "Retry", "Cancel"};

Strings operator+(Strings strings, const Strings& more) {
    strings.insert(strings.end(), more.begin(), more.end());
    return strings;
}

/// Shows the alert to a user who takes these actions.
ProcessResult show(const std::string& message, const Strings& buttons, const Strings& actions, Strings options = {},
                   const Strings& mode = {}) {
    for (const std::string& action : actions) {
        options = options + Strings{"--do", action};
    }
    return runAlertUser(options + Strings{"--", ALERT_DRIVER} + mode + Strings{message} + buttons,
                        {"", "", {{"LC_ALL", "C.UTF-8"}}, {}, 0});
}

/// The lines of output from "exit" on and those about what came before it.
std::string courseOf(const ProcessResult& result) {
    const std::size_t start = std::min(result.out.find("still up"), result.out.find("answer"));
    return result.out.substr(std::min(start, result.out.find("exit")));
}

struct Course {
    const char* name;
    Strings buttons, actions;
    std::string expected;
    Strings options{}, mode{};
};

class AlertCourse : public testing::TestWithParam<Course> {};

TEST_P(AlertCourse, FollowsWhatTheUserDoes) {
    const Course& course = GetParam();
    const ProcessResult result = show("Really?", course.buttons, course.actions, course.options, course.mode);
    EXPECT_EQ(courseOf(result), course.expected) << result.out << result.err;
}

const std::string LOST =
    "error alert: lost before it was answered: the other side closed the socket without an answer; ";
const Strings MANAGED{"--window-manager"};

// clang-format off
const Course COURSES[] = {
    {"Return", RETRY, {"key:Return"}, "answer 0\nexit 0\n"},
    {"KeypadEnter", RETRY, {"key:KP_Enter"}, "answer 0\nexit 0\n"},
    {"Space", RETRY, {"key:space"}, "answer 0\nexit 0\n"},
    {"TabAndSpace", RETRY, {"key:Tab", "key:Tab", "key:space"}, "still up\nstill up\nanswer 2\nexit 0\n"},
    {"EscapeIsTheFirstCancel", RETRY, {"key:Escape"}, "answer 1\nexit 0\n"},
    {"EscapeNeedsACancel", YES_NO, {"key:Escape", "click:1"}, "still up\nanswer 1\nexit 0\n"},
    {"ButtonOfTheSameTitle", RETRY, {"click:3"}, "answer 3\nexit 0\n"},
    {"PointerThatWasThereBefore", RETRY, {"click:1", "next", "press"}, "answer 1\nanswer 1\nexit 0\n", {}, {"TWICE"}},
    {"ReturnWithWindowManager", RETRY, {"key:Return"}, "answer 0\nexit 0\n", MANAGED},
    {"ClickWithWindowManager", RETRY, {"click:2"}, "answer 2\nexit 0\n", MANAGED},
    {"CloseIsTheFirstCancel", RETRY, {"key:ctrl+alt+Escape"}, "answer 1\nexit 0\n", MANAGED},
    {"CloseNeedsACancel", OK, {"key:ctrl+alt+Escape", "key:Return"}, "still up\nanswer 0\nexit 0\n", MANAGED},
    {"Terminated", YES_NO, {"signal:TERM"}, "exit -15\n"},
    {"Interrupted", YES_NO, {"signal:INT"}, "exit -2\n"},
    {"PanelKilled", RETRY, {"kill"}, "answer 1\nexit 0\n" + LOST + "taking 'Cancel'\n"},
    {"PanelKilledWithoutCancel", YES_NO, {"kill"}, "answer 1\nexit 0\n" + LOST + "taking 'No'\n"},
    {"ChildrenIgnored", YES_NO, {"click:1"}, "answer 1\nexit 0\n", {}, {"IGNORE_CHILDREN"}},
    {"ChildrenReaped", YES_NO, {"click:1"}, "answer 1\nexit 0\n", {}, {"REAP_CHILDREN"}},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(All, AlertCourse, testing::ValuesIn(COURSES), [](const auto& row) { return row.param.name; });

TEST(AlertText, IsShownInFullAndWithoutMarkup) {
    const std::string special = "100% of <b>them</b> & &amp; \"twice\" $(date) a_b";
    // clang-format off
    const struct { std::string message; Strings lines, mode{}; std::string title = "Alert"; } rows[] = {
        {"", {}, {"NOTE"}, "Information"}, {special, {"'" + special + "'"}, {"ERROR"}, "Critical"},
        {"One\n\nThree", {"'One\\n'", "'\\n'", "'Three'"}},
        {"\u30A4\u30F3 \U0001F600 \u00E9", {"'\u30A4\u30F3 \U0001F600 \u00E9'"}}, {"not UTF-8: \xFF.", {"'not UTF-8: \uFFFD.'"}}};
    // clang-format on
    for (const auto& row : rows) {
        const ProcessResult result = show(row.message, OK, {"key:Return"}, {}, row.mode);
        EXPECT_EQ(linesWith(result.out, "alert"), Strings{row.title}) << result.out << result.err;
        EXPECT_EQ(linesWith(result.out, "line"), row.lines);
        EXPECT_EQ(linesWith(result.out, "button"), Strings{"OK default focused"});
    }
}

/// The text of lines without their quotes.
std::string joined(const Strings& lines, const std::string& separator) {
    std::string text;
    for (const std::string& line : lines) {
        text += (text.empty() ? "" : separator) + line.substr(1, line.size() - 2);
    }
    return text;
}

/// 0 when two pictures are the same, 1 when they differ.
int difference(const std::string& one, const std::string& other) {
    return run({"compare", "-metric", "AE", one, other, "null:"}).exitStatus;
}

// A word that is longer than a line looks as if it were several: nothing is put where it breaks.
TEST(AlertText, IsWrappedAndBrokenWithoutHyphens) {
    std::string words;
    while (words.size() < 1000) {
        words += "These are words. ";
    }
    const Strings lines = linesWith(show(words, OK, {"key:Return"}).out, "line");
    EXPECT_EQ(joined(lines, ""), words);
    EXPECT_THAT(lines.size(), testing::AllOf(testing::Ge(14U), testing::Le(20U)));

    const TempDir folder;
    const auto showTo = [&](const std::string& message, const char* picture) {
        return linesWith(show(message, OK, {"picture:" + folder / picture, "key:Return"}).out, "line");
    };
    const std::string word(200, 'x');
    const Strings parts = showTo(word, "broken.png");
    EXPECT_EQ(joined(parts, ""), word);
    showTo(joined(parts, "\n"), "lines.png");
    EXPECT_EQ(difference(folder / "broken.png", folder / "lines.png"), 0);
}

TEST(AlertText, ScrollsWhenItIsHighAndLeavesRoomForTheButtons) {
    const TempDir folder;
    std::string text;
    for (int i = 1; i <= 200; ++i) {
        text += std::to_string(i) + "\n";
    }
    const Strings actions{"picture:" + folder / "top.png", "key:End", "picture:" + folder / "end.png", "key:Return"};
    const ProcessResult result = show(text, RETRY, actions);
    EXPECT_EQ(linesWith(result.out, "line").size(), 200U) << result.err;
    EXPECT_EQ(linesWith(result.out, "button"), (Strings{"OK default focused", "Cancel", "Retry", "Cancel"}));
    EXPECT_EQ(difference(folder / "top.png", folder / "end.png"), 1);
}

// The port is a copy, beside which lies only what the test puts there.
TEST(AlertPanel, MayBeMissingOrExitAtOnce) {
    const TempDir folder;
    std::filesystem::copy(PORT_LIBRARY, folder / "");
    ProcessOptions options;
    options.set = {{"LD_LIBRARY_PATH", folder.path()}, {"DISPLAY", ":77"}};
    const ProcessResult missing = run({ALERT_DRIVER, "Really?", "Yes", "No"}, options);
    EXPECT_EQ(missing.out, "answer 0\n");
    EXPECT_THAT(missing.err, StartsWith("alert: cv-alert, which shows alerts on the display, is not installed; "
                                        "asking on the terminal\n[alert] Warning: Really?\n"));

    const std::string panel = folder / "CvPlatform/cv-alert";
    writeFile(panel, "#!/bin/sh\n");
    std::filesystem::permissions(panel, std::filesystem::perms::owner_all);
    const ProcessResult ended = run({ALERT_DRIVER, "Really?", "Yes", "No"}, options);
    EXPECT_EQ(ended.out, "answer 1\n") << ended.err;
    EXPECT_THAT(ended.err, StartsWith("alert: lost before it was answered: "));
}

TEST(AlertOnTheTerminal, TakesTheFirstButtonWhereNobodyCanAnswer) {
    const std::string taken =
        "Line 1\n[alert] Line 2\n[alert] 1 Yes   2 Cancel   3 No\n"
        "[alert] There is no display and no terminal to ask; taking 1 Yes.\n";
    for (const auto& [display, mode, text] :
         {std::tuple{"", "NOTE", "[alert] Note: "},
          {":77", "ERROR", "alert: the display does not answer; asking on the terminal\n[alert] Error: "}}) {
        ProcessOptions options{"", "", {{"DISPLAY", display}}, {"WAYLAND_DISPLAY"}, 0};
        const ProcessResult result = run({ALERT_DRIVER, mode, "Line 1\nLine 2", "Yes", "Cancel", "No"}, options);
        EXPECT_EQ(result.out, "answer 0\n");
        EXPECT_EQ(result.err, text + taken);
    }
}

TEST(AlertOnTheTerminal, AsksUntilTheAnswerIsAButton) {
    ProcessOptions options{"4\nmaybe\n2\n", "", {}, {"DISPLAY", "WAYLAND_DISPLAY"}, 0};
    const std::string driver = std::string(ALERT_DRIVER) + " Sure? Yes Cancel No";
    const std::string out = run({"script", "--quiet", "--return", "--command", driver, "/dev/null"}, options).out;
    EXPECT_THAT(out, HasSubstr("'4' is not a number from 1 to 3."));
    EXPECT_THAT(out, HasSubstr("'maybe' is not a number from 1 to 3."));
    EXPECT_THAT(out, HasSubstr("answer 1\r\n"));
}

}  // namespace
