#pragma once

#include <CoreFoundation/CFBundle.h>

#include <mutex>
#include <string>

namespace cv {

/// Guards all bundles and the registered plug-ins. Recursive, since loading code runs that code's initialisers.
std::recursive_mutex& bundleMutex();

/// The bundle's absolute path, for messages.
const std::string& bundlePath(CFBundleRef bundle);

}  // namespace cv
