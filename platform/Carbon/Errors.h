#pragma once

#include <MacTypes.h>

#include <new>

namespace cv {

/// The Mac's result code for an `errno` value of a file system call.
OSErr fileError(int errnoValue);

/// What an `errno` value means, for a report. Never null.
const char* errorName(int errnoValue);

/// What `work` returns, or memFullErr when it throws std::bad_alloc: a call of the File Manager or the Apple Event
/// Manager never throws.
template <typename Work>
OSErr orMemoryError(Work work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

}  // namespace cv
