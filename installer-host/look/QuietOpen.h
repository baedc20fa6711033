#pragma once

#include <fcntl.h>

#include <cerrno>
#include <string>
#include <utility>

#include "platform/Descriptor.h"

namespace host {

/// Opens with `open(flags)`, which returns a descriptor, or -1 with errno set. Reading then leaves the access time
/// alone where the system lets us; of another user's file it does not.
template <typename Open>
cv::Descriptor openQuietly(int flags, Open open) {
    cv::Descriptor file(open(flags | O_NOATIME));
    return file.isOpen() || errno != EPERM ? std::move(file) : cv::Descriptor(open(flags));
}

/// The same for `path`, which openat(2) finds from `folder`. Child processes do not get the descriptor.
inline cv::Descriptor openQuietly(int folder, const std::string& path, int flags) {
    return openQuietly(flags | O_CLOEXEC, [&](int all) { return openat(folder, path.c_str(), all); });
}

}  // namespace host
