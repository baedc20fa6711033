#pragma once

#include <fcntl.h>

#include <string>

#include "platform/Descriptor.h"

namespace host {

/// Writes to one of the files by which the kernel takes orders, in /proc or /sys. False when it refuses.
inline bool writeKernelFile(const std::string& path, const std::string& text) {
    const cv::Descriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    return file.isOpen() && cv::writeAll(file.get(), text) == 0;
}

}  // namespace host
