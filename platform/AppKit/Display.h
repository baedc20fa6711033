#pragma once

namespace cv {

/// Whether the X server that DISPLAY names lets this process in. X11 is loaded to ask it, so that the port does not
/// need it otherwise.
bool displayAnswers();

}  // namespace cv
