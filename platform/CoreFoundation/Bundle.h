#pragma once

#include <CoreFoundation/CFBundle.h>

#include <atomic>
#include <string>

#include "platform/CoreFoundation/Collections.h"
#include "platform/Result.h"

struct __CFBundle : objc_object {
    __CFBundle(std::string location, cv::Owned<__CFDictionary> information);

    const std::string path;  ///< absolute, without symbolic links
    const cv::Owned<__CFDictionary> info;
    std::atomic<void*> code{nullptr};  ///< what dlopen gave; never closed
};

namespace cv {

/// What Contents/Info.plist of the bundle at a path holds. Throws std::bad_alloc.
Result<Owned<__CFDictionary>> readInfo(const std::string& bundlePath);

/// Reports why `call` failed, and keeps the reason for bundleProblem().
void bundleFailed(const char* call, const std::string& reason);

}  // namespace cv
