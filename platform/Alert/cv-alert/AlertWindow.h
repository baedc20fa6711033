#pragma once

#include <cstddef>

#include "platform/Alert/Alert.h"

namespace cv {

/// Shows the alert on GTK's display, waits until a button is pressed, and takes the window away again. Returns the
/// button's index.
std::size_t askInWindow(const Alert& alert);

}  // namespace cv
