// Every form of the message boxes, with a user at the other end of the socket on which the program asks.

#include "UI/Native/MessageBox.h"

#include <sys/socket.h>

#include "CvBase/Mac/AutoreleasePool.h"
#include "platform/Alert/AlertMessage.h"
#include "platform/Descriptor.h"
#include "tests/support/Test.h"

namespace {

using namespace UI::Native;
using cv::AlertStyle;
using Box = bool (*)(const String& message, IconType icon);

bool g_cancelled;

bool showOK(const String& message, IconType icon) {
    return MessageOK(nullptr, "title", message, false, icon);
}

bool showUtf16(const String& message, IconType icon) {
    const shared_array<unsigned short> units = message.Unicode();
    std::vector<unsigned short> vector;
    for (std::size_t i = 0; units[i] != 0; ++i) {
        vector.push_back(units[i]);
    }
    MessageOK(nullptr, {}, vector, {0x41}, false, icon);
    MessageOK(nullptr, vector, {}, {0x41}, false, icon);
    MessageOK(nullptr, vector, vector, {}, false, icon);
    return true;
}

/// Shows the box to a user who presses the button with this index once, and gives what the user saw and the program
/// got.
std::pair<cv::Alert, bool> press(std::size_t button, Box box, const String& message, IconType icon) {
    std::array<int, 2> ends{};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    cv::Descriptor asking(ends[0]);
    const cv::Descriptor showing(ends[1]);
    setenv("CV_ALERT_SOCKET", std::to_string(asking.get()).c_str(), 1);
    std::vector<cv::Alert> seen;
    std::thread user([&] {
        while (const std::optional<cv::Alert> alert = cv::readAlert(showing.get())) {
            seen.push_back(*alert);
            cv::writeAnswer(showing.get(), button);
        }
    });
    const cv::AutoreleasePool pool;
    const bool answer = box(message, icon);
    asking = cv::Descriptor();
    user.join();
    EXPECT_EQ(seen.size(), 1U);
    return {seen.at(0), answer};
}

TEST(MessageBox, ShowsItsButtonsAndGivesTheAnswer) {
    // clang-format off
    const struct { const char* name; Box box; std::vector<std::string> buttons; std::vector<bool> answers, cancelled{}; } rows[] = {
        {"OK", showOK, {"OK"}, {true}}, {"UTF-16", showUtf16, {"OK"}, {true}},
        {"OKCancel", [](const String& message, IconType icon) { return MessageOKCancel(nullptr, "", message, OKCancelFocusCancel, true, icon); },
         {"OK", "Cancel"}, {true, false}},
        {"YesNo", [](const String& message, IconType icon) { return MessageYesNo(nullptr, "", message, YesNoFocusNo, false, icon); },
         {"Yes", "No"}, {true, false}},
        {"YesNoCancel", [](const String& message, IconType icon) { return MessageYesNoCancel(g_cancelled, nullptr, "", message, YesNoCancelFocusCancel, false, icon); },
         {"Yes", "Cancel", "No"}, {true, false, false}, {false, true, false}},
        {"RetryCancel", [](const String& message, IconType icon) { return MessageRetryCancel(nullptr, "", message, RetryCancelFocusCancel, false, icon); },
         {"OK", "Cancel", "Retry", "Cancel"}, {true, false, false, false}},
    };
    // clang-format on
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.buttons.size(); ++i) {
            SCOPED_TRACE(std::string(row.name) + ": " + row.buttons[i]);
            g_cancelled = row.cancelled.empty() || !row.cancelled[i];
            const auto [seen, answer] = press(i, row.box, "Where to?\n\xC3\xA0 la carte", IconWarning);
            EXPECT_EQ(seen.message, "Where to?\n\xC3\xA0 la carte");
            EXPECT_EQ(seen.buttons, row.buttons);
            EXPECT_EQ(answer, row.answers[i]);
            EXPECT_TRUE(row.cancelled.empty() || g_cancelled == row.cancelled[i]);
        }
    }
}

TEST(MessageBox, HasTheStyleOfItsIcon) {
    const auto NOTE = AlertStyle::Informational, WARNING = AlertStyle::Warning, ERROR = AlertStyle::Critical;
    int icon = -1;
    for (const AlertStyle style : {WARNING, NOTE, ERROR, WARNING, NOTE, NOTE, WARNING}) {
        EXPECT_EQ(press(0, showOK, "x", IconType(icon)).first.style, style) << icon;
        ++icon;
    }
    EXPECT_EQ(press(0, showUtf16, "x", IconError).first.style, WARNING)
        << "the UTF-16 form leaves the panel its own style";
    for (const char* message : {"", "\xFF\xFE"}) {
        EXPECT_EQ(press(0, showOK, message, IconError).first.message, "");
    }
}

}  // namespace
