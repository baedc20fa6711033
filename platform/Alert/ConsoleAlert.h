#pragma once

#include "platform/Alert/Alert.h"

namespace cv {

/// Asks where there is no display: writes the message and the buttons to standard error and reads the choice from the
/// terminal, or takes the first button when standard input is not a terminal. Returns the index of the button.
std::size_t askOnConsole(const Alert& alert);

}  // namespace cv
