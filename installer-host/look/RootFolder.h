#pragma once

#include <string>

#include "platform/Descriptor.h"

namespace host {

/// The folder that stands for "/": the machine's own root or a private one.
class RootFolder {
public:
    /// `path` empty means the machine's root. Throws Failure (RootNotMade) when there is no such folder.
    explicit RootFolder(const std::string& path);

    /// Opens `path`, which begins with "/", as seen from inside the root: symbolic links are followed and none leads
    /// out of it. `flags` as for open(2), without O_CREAT; the access time stays as it is where the system lets us. An
    /// invalid descriptor, with errno set, when that fails.
    cv::Descriptor open(const std::string& path, int flags) const;

private:
    cv::Descriptor folder_;
    bool machine_;
};

}  // namespace host
