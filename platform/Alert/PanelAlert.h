#pragma once

#include <optional>
#include <string>

#include "platform/Alert/Alert.h"

namespace cv {

/// Whether the environment names a display, be it X or Wayland.
bool displayIsNamed();

/// Shows the alert as a panel on the display, by cv-alert, a process of its own: a toolkit in this one would change the
/// program's locale and stay in its memory. `path` is the program's; the panel has the title that the environment
/// variable CV_ALERT_TITLE gives it, or one that goes by the alert's style. Nothing, and a line on standard error, when
/// cv-alert is not installed or does not reach the display. Throws AlertFault when cv-alert ends without an answer.
std::optional<std::size_t> askOnPanel(const Alert& alert, const std::string& path);

}  // namespace cv
