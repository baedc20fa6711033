// Every form of the message boxes as a real panel, answered by a real click; and on the terminal, where there is no
// display.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/UI/AlertUser.h"

namespace {

using namespace test;

/// Runs the driver without a display, or with one that does not answer.
ProcessResult showOnConsole(const Strings& driverArguments, const std::string& display = "") {
    Strings command = {MESSAGE_BOX_DRIVER};
    command.insert(command.end(), driverArguments.begin(), driverArguments.end());
    ProcessOptions options;
    options.unset = {"WAYLAND_DISPLAY"};
    options.set = {{"DISPLAY", display}};
    return run(command, options);
}

struct PanelCase {
    const char* name;
    const char* form;
    Strings buttons;
    int press;
    const char* answer;
    Strings cancelled;
};

class Panel : public testing::TestWithParam<PanelCase> {};

TEST_P(Panel, ShowsItsTextAndButtonsAndGivesTheAnswer) {
    const PanelCase& c = GetParam();
    const std::string message = "Where to? \u00E0 la carte";
    const ProcessResult result =
        runAlertUser({"--do", "click:" + std::to_string(c.press), "--", MESSAGE_BOX_DRIVER, c.form, "0", message});
    EXPECT_EQ(linesWith(result.out, "line"), Strings{"'" + message + "'"}) << result.out << result.err;
    Strings buttons = c.buttons;
    buttons.front() += " default focused";
    EXPECT_EQ(linesWith(result.out, "button"), buttons);
    EXPECT_EQ(linesWith(result.out, "answer"), Strings{c.answer}) << result.out;
    EXPECT_EQ(linesWith(result.out, "cancelled"), c.cancelled);
    EXPECT_EQ(linesWith(result.out, "error"), Strings{});
}

const Strings OK{"OK"}, OK_CANCEL{"OK", "Cancel"}, YES_NO{"Yes", "No"}, YES_CANCEL_NO{"Yes", "Cancel", "No"},
    RETRY{"OK", "Cancel", "Retry", "Cancel"};

INSTANTIATE_TEST_SUITE_P(
    Forms, Panel,
    testing::Values(PanelCase{"OK", "OK", OK, 0, "true", {}},                            //
                    PanelCase{"Utf16", "UTF16", OK, 0, "true", {}},                      //
                    PanelCase{"OKCancelOK", "OKCancel", OK_CANCEL, 0, "true", {}},       //
                    PanelCase{"OKCancelCancel", "OKCancel", OK_CANCEL, 1, "false", {}},  //
                    PanelCase{"YesNoYes", "YesNo", YES_NO, 0, "true", {}},               //
                    PanelCase{"YesNoNo", "YesNo", YES_NO, 1, "false", {}},               //
                    PanelCase{"YesNoCancelYes", "YesNoCancel", YES_CANCEL_NO, 0, "true", {"false"}},
                    PanelCase{"YesNoCancelCancel", "YesNoCancel", YES_CANCEL_NO, 1, "false", {"true"}},
                    PanelCase{"YesNoCancelNo", "YesNoCancel", YES_CANCEL_NO, 2, "false", {"false"}},
                    PanelCase{"RetryCancelOK", "RetryCancel", RETRY, 0, "true", {}},
                    PanelCase{"RetryCancelFirstCancel", "RetryCancel", RETRY, 1, "false", {}},
                    PanelCase{"RetryCancelRetry", "RetryCancel", RETRY, 2, "false", {}},
                    PanelCase{"RetryCancelSecondCancel", "RetryCancel", RETRY, 3, "false", {}}),
    [](const auto& parameter) { return parameter.param.name; });

TEST(PanelStyle, IsThatOfTheIconAndTheTextMayBeEmptyOrInvalid) {
    const struct {
        const char *icon, *message, *title;
    } ROWS[] = {{"0", "", "Information"}, {"1", "(invalid UTF-8)", "Critical"}, {"2", "", "Alert"}};
    for (const auto& row : ROWS) {
        const ProcessResult result =
            runAlertUser({"--do", "key:Return", "--", MESSAGE_BOX_DRIVER, "OK", row.icon, row.message});
        EXPECT_EQ(linesWith(result.out, "alert"), Strings{row.title}) << result.out << result.err;
        EXPECT_EQ(linesWith(result.out, "line"), Strings{});
        EXPECT_EQ(linesWith(result.out, "answer"), Strings{"true"});
    }
}

TEST(Console, TakesTheFirstButtonWithoutDisplayAndTerminal) {
    const std::string taken =
        "[alert] Warning: Line 1\n"
        "[alert] Line 2\n"
        "[alert] 1 Yes   2 Cancel   3 No\n"
        "[alert] There is no display and no terminal to ask; taking 1 Yes.\n";
    const Strings arguments{"YesNoCancel", "2", "Line 1\nLine 2"};
    const ProcessResult result = showOnConsole(arguments);
    EXPECT_EQ(result.out, "answer true\ncancelled false\n");
    EXPECT_EQ(result.err, taken);
    EXPECT_EQ(showOnConsole(arguments, ":77").err,
              "alert: the display does not answer; asking on the terminal\n" + taken);
}

TEST(Console, ShowsTheStyleOfTheIcon) {
    const std::vector<std::pair<const char*, const char*>> styles = {
        {"0", "Note"}, {"1", "Error"},   {"2", "Warning"}, {"3", "Note"},
        {"4", "Note"}, {"5", "Warning"}, {"7", "Warning"}, {"-1", "Warning"}};
    for (const auto& [icon, style] : styles) {
        EXPECT_THAT(showOnConsole({"OK", icon, "x"}).err,
                    testing::StartsWith(std::string("[alert] ") + style + ": x\n"))
            << "icon " << icon;
    }
    EXPECT_THAT(showOnConsole({"UTF16", "1", "x"}).err, testing::StartsWith("[alert] Warning: x\n"))
        << "the UTF-16 form leaves the panel its own style";
}

TEST(Console, AsksAtTheTerminalUntilTheAnswerIsAButton) {
    const std::string driver = std::string(MESSAGE_BOX_DRIVER) + " YesNoCancel 0 Sure?";
    ProcessOptions options;
    options.unset = {"DISPLAY", "WAYLAND_DISPLAY"};
    options.in = "4\nmaybe\n2\n";
    const std::string out = run({"script", "--quiet", "--return", "--command", driver, "/dev/null"}, options).out;
    EXPECT_THAT(out, testing::HasSubstr("'4' is none of the numbers 1 to 3."));
    EXPECT_THAT(out, testing::HasSubstr("'maybe' is none of the numbers 1 to 3."));
    EXPECT_THAT(out, testing::HasSubstr("answer false\r\ncancelled true\r\n"));
}

}  // namespace
