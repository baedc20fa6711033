#pragma once

#include <string>
#include <vector>

#include <CoreFoundation/CFBase.h>

namespace cv {

/// Something that a caller asked the port to store and that is not on the disk. The Mac's interfaces return false or an
/// error, which their callers may ignore; the installer host asks here after the run.
struct StoreFailure {
    std::string what;    ///< the file or folder concerned
    std::string reason;  ///< to end a sentence with
    /// False when `what` could not be found, or its Finder information could not be read, which comes before storing
    /// it. A caller that meant to change it gives up there; one that only wanted to look has lost nothing. The port
    /// cannot tell them apart; whoever knows what was to be stored can.
    bool wasToBeStored;
};

/// Records that `what` could not be stored, in place of an earlier failure of the same. If there is no memory for that,
/// records that there was such a failure.
CF_EXPORT void storeFailed(const char* what, const char* reason) noexcept;

/// Records that `what`, which is there, could not be found or read on the way to storing something of it, unless it is
/// already known that it could not be stored. What is not there at all is not a failure, and not recorded.
CF_EXPORT void lookupFailed(const char* what, const char* reason) noexcept;

/// Records that `what` was stored: an earlier failure is made good, also one of lookupFailed.
CF_EXPORT void storeSucceeded(const char* what) noexcept;

/// The failures that were not made good, in the order they came in.
CF_EXPORT std::vector<StoreFailure> storeFailures();

}  // namespace cv
