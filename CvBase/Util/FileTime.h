#pragma once

#include <cstdint>

#include "CvBase/common/common_string.h"

#pragma GCC visibility push(default)

namespace Util {

/// When a file or folder was last used and last changed, in whole seconds since 1970-01-01 00:00:00 UTC. Times after
/// 2038-01-19 03:14:07 UTC do not fit: their lower 32 bits are kept, which makes them negative.
struct FileTime {
    std::int32_t accessTime = 0;        ///< last used
    std::int32_t modificationTime = 0;  ///< last changed
};

/// Reads the times of the file or folder at `path`, following symbolic links. If that fails, returns false, leaves
/// `time` unchanged and sets errno.
[[nodiscard]] bool ReadFileTime(const String& path, FileTime& time);

/// Sets both times of the file or folder at `path`, following symbolic links, with no fraction of a second. If that
/// fails, returns false and sets errno.
[[nodiscard]] bool WriteFileTime(const String& path, const FileTime& time);

}  // namespace Util

#pragma GCC visibility pop
