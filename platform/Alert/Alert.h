#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace cv {

/// What kind of news an alert brings, with the values of NSAlertStyle.
enum class AlertStyle { Warning = 0, Informational = 1, Critical = 2 };

/// A message and the buttons to answer it with.
struct Alert {
    std::string message;  ///< UTF-8, shown as it is and whole
    AlertStyle style = AlertStyle::Warning;
    std::vector<std::string> buttons;  ///< UTF-8, in the order they were added; the first is the default. Never empty.
};

/// Shows the alert, waits for its answer, and returns the index of the button that was pressed. May be called from any
/// thread; of several threads one asks at a time. The program's signals, locale and descriptors stay as they are.
///
/// It asks the other side of the socket that CV_ALERT_SOCKET names (AlertMessage.h has the messages), if the variable
/// is set; else a panel on the display; else, where no display answers, the terminal. If the other side ends without an
/// answer, a line on standard error says so, and the result is unansweredButton() (AlertMessage.h).
///
/// Throws std::bad_alloc only.
__attribute__((visibility("default"))) std::size_t runAlert(const Alert& alert);

}  // namespace cv
