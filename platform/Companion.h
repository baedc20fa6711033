#pragma once

#include <string>

namespace cv {

/// The absolute path at which the program or module `name` of the port stands: in the folder CvPlatform beside the
/// port's own library, built and installed alike. It need not exist. Empty when the place of the library is not known.
std::string companionPath(const char* name);

}  // namespace cv
