#pragma once

namespace cv {

/// From the beginning of Unix's times to that of the Mac's, 1 January 2001 UTC, in seconds.
constexpr int SECONDS_FROM_1970_TO_2001 = 978307200;

}  // namespace cv
