#pragma once

#include <optional>

#include "platform/Alert/Alert.h"

namespace cv {

/// Whether the environment names a display, be it X or Wayland.
bool displayIsNamed();

/// Shows the alert as a panel on the display, by cv-alert, a process of its own: a toolkit in this one would change the
/// program's locale and stay in its memory. Nothing, and a line on standard error, when cv-alert is not installed or
/// does not reach the display. Throws AlertFault when cv-alert ends without an answer.
std::optional<std::size_t> askOnPanel(const Alert& alert);

}  // namespace cv
