#pragma once

#include <string>

namespace cv {

/// The absolute path at which the program or module `name` of the port stands: in the folder CvPlatform beside the
/// port's own library, built and installed alike. Whether it is there is not looked at. Empty when the library's place
/// cannot be told.
std::string companionPath(const char* name);

}  // namespace cv
