// Every form of the message boxes as a real panel, answered by a real click; and on the terminal, where there is no
// display.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

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

/// A form of the message box, and what it answers for each of its buttons.
struct Form {
    const char* name;
    Strings buttons, answers, cancelled{};
};

class Panel : public testing::TestWithParam<Form> {};

TEST_P(Panel, ShowsItsTextAndButtonsAndGivesTheAnswer) {
    const Form& form = GetParam();
    const std::string message = "Where to? \u00E0 la carte";
    Strings buttons = form.buttons;
    buttons.front() += " default focused";
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        const ProcessResult result =
            runAlertUser({"--do", "click:" + std::to_string(i), "--", MESSAGE_BOX_DRIVER, form.name, "0", message});
        EXPECT_EQ(linesWith(result.out, "line"), Strings{"'" + message + "'"}) << result.out << result.err;
        EXPECT_EQ(linesWith(result.out, "button"), buttons);
        EXPECT_EQ(linesWith(result.out, "answer"), Strings{form.answers[i]}) << form.buttons[i];
        EXPECT_EQ(linesWith(result.out, "cancelled"), form.cancelled.empty() ? Strings{} : Strings{form.cancelled[i]});
        EXPECT_EQ(linesWith(result.out, "error"), Strings{});
    }
}

// clang-format off
const Form FORMS[] = {
    {"OK", {"OK"}, {"true"}}, {"UTF16", {"OK"}, {"true"}},
    {"OKCancel", {"OK", "Cancel"}, {"true", "false"}}, {"YesNo", {"Yes", "No"}, {"true", "false"}},
    {"YesNoCancel", {"Yes", "Cancel", "No"}, {"true", "false", "false"}, {"false", "true", "false"}},
    {"RetryCancel", {"OK", "Cancel", "Retry", "Cancel"}, {"true", "false", "false", "false"}},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Forms, Panel, testing::ValuesIn(FORMS), [](const auto& form) { return form.param.name; });

TEST(PanelStyle, IsThatOfTheIconAndTheTextMayBeEmptyOrInvalid) {
    for (const auto& [icon, message, title] :
         {std::tuple{"0", "", "Information"}, {"1", "(invalid UTF-8)", "Critical"}, {"2", "", "Alert"}}) {
        const ProcessResult result =
            runAlertUser({"--do", "key:Return", "--", MESSAGE_BOX_DRIVER, "OK", icon, message});
        EXPECT_EQ(linesWith(result.out, "alert"), Strings{title}) << result.out << result.err;
        EXPECT_EQ(linesWith(result.out, "line"), Strings{});
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
    // clang-format off
    for (const auto& [icon, style] : {std::pair{"0", "Note"}, {"1", "Error"}, {"2", "Warning"}, {"3", "Note"}, {"4", "Note"},
                                      {"5", "Warning"}, {"-1", "Warning"}}) {
        // clang-format on
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
