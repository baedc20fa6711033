#pragma once

#include <string>
#include <vector>

#include <CoreFoundation/CFBase.h>

namespace cv {

/// Something that a caller asked the port to store and that is not on the disk. The Mac's interfaces answer false or an
/// error and their callers may pass over that; the installer host asks here after the run.
struct StoreFailure {
    std::string what;    ///< the file or folder concerned
    std::string reason;  ///< to end a sentence with
};

/// Records that `what` could not be stored, in place of an earlier failure of the same. Without memory to do so, it is
/// remembered that there was one.
CF_EXPORT void storeFailed(const char* what, const char* reason) noexcept;

/// Records that `what` was stored: an earlier failure is made good.
CF_EXPORT void storeSucceeded(const char* what) noexcept;

/// The failures that were not made good, in the order they came in.
CF_EXPORT std::vector<StoreFailure> storeFailures();

}  // namespace cv
