// Every form of the message boxes as a real panel; and on the terminal, where there is no display.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/Process.h"

namespace {

using Strings = std::vector<std::string>;

/// Runs the driver under an X server of its own and returns what it prints.
std::string showPanel(const Strings& driverArguments) {
    Strings command = {"xvfb-run", "--auto-servernum", "--server-args=-screen 0 1024x768x24", MESSAGE_BOX_DRIVER};
    command.insert(command.end(), driverArguments.begin(), driverArguments.end());
    const test::ProcessResult result = test::run(command);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.err, "");
    return result.out;
}

/// Runs the driver without an X server.
test::ProcessResult showOnConsole(Strings command, const char* display = "") {
    command.insert(command.begin(), MESSAGE_BOX_DRIVER);
    test::ProcessOptions options;
    options.set = {{"DISPLAY", display}};
    return test::run(command, options);
}

struct PanelCase {
    const char* name;
    const char* form;
    const char* buttons;
    const char* press;
    const char* answer;
};

class Panel : public testing::TestWithParam<PanelCase> {};

TEST_P(Panel, ShowsItsTextAndButtonsAndGivesTheAnswer) {
    const PanelCase& c = GetParam();
    EXPECT_EQ(showPanel({c.form, "1", "Where to? à la carte", c.press}),
              std::string("text Where to? à la carte\n") + c.buttons + c.answer);
}

const char* const OK = "button OK\n";
const char* const OK_CANCEL = "button OK\nbutton Cancel\n";
const char* const YES_NO = "button Yes\nbutton No\n";
const char* const YES_CANCEL_NO = "button Yes\nbutton Cancel\nbutton No\n";
const char* const RETRY = "button OK\nbutton Cancel\nbutton Retry\nbutton Cancel\n";

INSTANTIATE_TEST_SUITE_P(
    Forms, Panel,
    testing::Values(PanelCase{"OK", "OK", OK, "OK", "answer true\n"},
                    PanelCase{"Utf16", "UTF16", OK, "OK", "answer true\n"},
                    PanelCase{"OKCancelOK", "OKCancel", OK_CANCEL, "OK", "answer true\n"},
                    PanelCase{"OKCancelCancel", "OKCancel", OK_CANCEL, "Cancel", "answer false\n"},
                    PanelCase{"YesNoYes", "YesNo", YES_NO, "Yes", "answer true\n"},
                    PanelCase{"YesNoNo", "YesNo", YES_NO, "No", "answer false\n"},
                    PanelCase{"YesNoCancelYes", "YesNoCancel", YES_CANCEL_NO, "Yes", "answer true\ncancelled false\n"},
                    PanelCase{"YesNoCancelNo", "YesNoCancel", YES_CANCEL_NO, "No", "answer false\ncancelled false\n"},
                    PanelCase{"YesNoCancelCancel", "YesNoCancel", YES_CANCEL_NO, "Cancel",
                              "answer false\ncancelled true\n"},
                    PanelCase{"RetryCancelOK", "RetryCancel", RETRY, "OK", "answer true\n"},
                    PanelCase{"RetryCancelFirstCancel", "RetryCancel", RETRY, "Cancel/1", "answer false\n"},
                    PanelCase{"RetryCancelRetry", "RetryCancel", RETRY, "Retry", "answer false\n"},
                    PanelCase{"RetryCancelSecondCancel", "RetryCancel", RETRY, "Cancel/2", "answer false\n"}),
    [](const auto& parameter) { return parameter.param.name; });

TEST(PanelText, MayBeEmptyOrInvalid) {
    for (const char* const message : {"", "(invalid UTF-8)"}) {
        EXPECT_EQ(showPanel({"OK", "0", message, "OK"}), "button OK\nanswer true\n");
    }
}

TEST(Console, TakesTheFirstButtonWithoutDisplayAndTerminal) {
    for (const char* const display : {"", ":77"}) {
        const test::ProcessResult result = showOnConsole({"YesNoCancel", "2", "Line 1\nLine 2"}, display);
        EXPECT_EQ(result.out, "answer true\ncancelled false\n");
        EXPECT_EQ(result.err,
                  "[alert] Warning: Line 1\n"
                  "[alert] Line 2\n"
                  "[alert] 1 Yes   2 Cancel   3 No\n"
                  "[alert] There is no display and no terminal to ask; taking 1 Yes.\n");
    }
}

TEST(Console, ShowsTheStyleOfTheIcon) {
    const std::pair<const char*, std::string> styles[] = {{"0", "Note"},    {"1", "Error"},   {"2", "Warning"},
                                                          {"3", "Note"},    {"4", "Note"},    {"5", "Warning"},
                                                          {"7", "Warning"}, {"-1", "Warning"}};
    for (const auto& [icon, style] : styles) {
        EXPECT_THAT(showOnConsole({"OK", icon, "x"}).err, testing::StartsWith("[alert] " + style + ": x\n")) << icon;
    }
    EXPECT_THAT(showOnConsole({"UTF16", "1", "x"}).err, testing::StartsWith("[alert] Warning: x\n"))
        << "the UTF-16 form leaves the panel its own style";
}

TEST(Console, AsksAtTheTerminalUntilTheAnswerIsAButton) {
    const std::string driver = std::string(MESSAGE_BOX_DRIVER) + " YesNoCancel 0 Sure?";
    test::ProcessOptions options;
    options.unset = {"DISPLAY"};
    options.in = "4\nmaybe\n2\n";
    const std::string out = test::run({"script", "--quiet", "--return", "--command", driver, "/dev/null"}, options).out;
    EXPECT_THAT(out, testing::HasSubstr("'4' is none of the numbers 1 to 3."));
    EXPECT_THAT(out, testing::HasSubstr("'maybe' is none of the numbers 1 to 3."));
    EXPECT_THAT(out, testing::HasSubstr("answer false\r\ncancelled true\r\n"));
}

}  // namespace
