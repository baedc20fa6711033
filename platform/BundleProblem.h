#pragma once

#include <string>

#include <CoreFoundation/CFBase.h>

namespace cv {

/// Why a bundle could not be made, registered, loaded or asked for its factory's instance in this thread, the last time
/// that this happened: the Mac's interfaces answer false or null. Empty when it never did.
CF_EXPORT std::string bundleProblem();

}  // namespace cv
