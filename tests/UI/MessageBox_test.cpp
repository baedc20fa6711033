// Every form of the message boxes as a real panel, answered by a real click; and on the terminal, where there is no
// display.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/Process.h"

namespace {

using Strings = std::vector<std::string>;

Strings linesWith(const std::string& output, const std::string& keyword) {
    Strings values;
    for (std::size_t start = 0; start < output.size();) {
        const std::size_t end = output.find('\n', start);
        if (output.compare(start, keyword.size() + 1, keyword + " ") == 0) {
            values.push_back(output.substr(start + keyword.size() + 1, end - start - keyword.size() - 1));
        }
        start = end + 1;
    }
    return values;
}

/// Runs the driver under an X server of its own.
test::ProcessResult showPanel(Strings driverArguments) {
    Strings command = {"xvfb-run", "--auto-servernum", "--server-args=-screen 0 1024x768x24", MESSAGE_BOX_DRIVER};
    command.insert(command.end(), driverArguments.begin(), driverArguments.end());
    return test::run(command);
}

/// Runs the driver without an X server.
test::ProcessResult showOnConsole(const Strings& driverArguments, const std::string& display = "") {
    Strings command = {MESSAGE_BOX_DRIVER};
    command.insert(command.end(), driverArguments.begin(), driverArguments.end());
    test::ProcessOptions options;
    if (display.empty()) {
        options.unset = {"DISPLAY"};
    } else {
        options.set = {{"DISPLAY", display}};
    }
    return test::run(command, options);
}

struct PanelCase {
    const char* name;
    const char* form;
    Strings buttons;
    const char* press;
    const char* answer;
    Strings cancelled;
};

class Panel : public testing::TestWithParam<PanelCase> {};

TEST_P(Panel, ShowsItsTextAndButtonsAndGivesTheAnswer) {
    const PanelCase& c = GetParam();
    const std::string message = "Where to? à la carte";
    const test::ProcessResult result = showPanel({c.form, "1", message, c.press});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(linesWith(result.out, "text"), Strings{message});
    EXPECT_THAT(linesWith(result.out, "button"), testing::UnorderedElementsAreArray(c.buttons));
    EXPECT_EQ(linesWith(result.out, "answer"), Strings{c.answer}) << result.out;
    EXPECT_EQ(linesWith(result.out, "cancelled"), c.cancelled);
}

const Strings OK{"OK"}, OK_CANCEL{"OK", "Cancel"}, YES_NO{"Yes", "No"}, YES_CANCEL_NO{"Yes", "Cancel", "No"},
    RETRY{"OK", "Cancel", "Retry", "Cancel"};

INSTANTIATE_TEST_SUITE_P(
    Forms, Panel,
    testing::Values(PanelCase{"OK", "OK", OK, "OK", "true", {}},                                //
                    PanelCase{"Utf16", "UTF16", OK, "OK", "true", {}},                          //
                    PanelCase{"OKCancelOK", "OKCancel", OK_CANCEL, "OK", "true", {}},           //
                    PanelCase{"OKCancelCancel", "OKCancel", OK_CANCEL, "Cancel", "false", {}},  //
                    PanelCase{"YesNoYes", "YesNo", YES_NO, "Yes", "true", {}},                  //
                    PanelCase{"YesNoNo", "YesNo", YES_NO, "No", "false", {}},                   //
                    PanelCase{"YesNoCancelYes", "YesNoCancel", YES_CANCEL_NO, "Yes", "true", {"false"}},
                    PanelCase{"YesNoCancelNo", "YesNoCancel", YES_CANCEL_NO, "No", "false", {"false"}},
                    PanelCase{"YesNoCancelCancel", "YesNoCancel", YES_CANCEL_NO, "Cancel", "false", {"true"}},
                    PanelCase{"RetryCancelOK", "RetryCancel", RETRY, "OK", "true", {}},
                    PanelCase{"RetryCancelFirstCancel", "RetryCancel", RETRY, "Cancel/1", "false", {}},
                    PanelCase{"RetryCancelRetry", "RetryCancel", RETRY, "Retry", "false", {}},
                    PanelCase{"RetryCancelSecondCancel", "RetryCancel", RETRY, "Cancel/2", "false", {}}),
    [](const auto& parameter) { return parameter.param.name; });

TEST(PanelText, MayBeEmptyOrInvalid) {
    for (const char* const message : {"", "(invalid UTF-8)"}) {
        const test::ProcessResult result = showPanel({"OK", "0", message, "OK"});
        EXPECT_EQ(linesWith(result.out, "button"), OK) << result.err;
        EXPECT_EQ(linesWith(result.out, "text"), Strings{});
        EXPECT_EQ(linesWith(result.out, "answer"), Strings{"true"});
    }
}

TEST(PanelScreenshot, IsSaved) {
    const std::filesystem::path picture = std::filesystem::path(SCREENSHOT_FOLDER) / "wrong-version.png";
    std::filesystem::create_directories(picture.parent_path());
    std::filesystem::remove(picture);
    showPanel({"OK", "0", "Unable to set post install option keys.", "OK", picture.string()});
    ASSERT_TRUE(std::filesystem::exists(picture));
    EXPECT_GT(std::filesystem::file_size(picture), 1000u);
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
    test::ProcessOptions options;
    options.unset = {"DISPLAY"};
    options.in = "4\nmaybe\n2\n";
    const std::string out = test::run({"script", "--quiet", "--return", "--command", driver, "/dev/null"}, options).out;
    EXPECT_THAT(out, testing::HasSubstr("'4' is none of the numbers 1 to 3."));
    EXPECT_THAT(out, testing::HasSubstr("'maybe' is none of the numbers 1 to 3."));
    EXPECT_THAT(out, testing::HasSubstr("answer false\r\ncancelled true\r\n"));
}

}  // namespace
