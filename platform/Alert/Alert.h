#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace cv {

/// What kind of news an alert brings, with the values of NSAlertStyle.
enum class AlertStyle { Warning = 0, Informational = 1, Critical = 2 };

struct Alert {
    std::string message;  ///< UTF-8, shown as it is and whole
    AlertStyle style = AlertStyle::Warning;
    std::vector<std::string> buttons;  ///< UTF-8, in the order they were added; the first is the default. Never empty.
};

/// Shows the alert, waits for its answer, and returns the index of the button that was pressed. From any thread; of
/// several threads one asks at a time. The program's signals, locale and descriptors stay as they are.
///
/// Asked is whoever serves the socket that CV_ALERT_SOCKET names (AlertMessage.h tells how), if the variable is set;
/// else a panel on the display; else, where no display answers, the terminal. Whoever breaks off without an answer is
/// reported on standard error, and unansweredButton() is returned (AlertMessage.h).
///
/// Throws std::bad_alloc only.
__attribute__((visibility("default"))) std::size_t runAlert(const Alert& alert);

}  // namespace cv
