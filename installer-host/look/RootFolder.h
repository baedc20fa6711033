#pragma once

#include <string>
#include <string_view>

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

    /// Opens the folder at `path`, which begins with "/" and may be longer than the system takes at once, for reading
    /// its names. No symbolic link is followed; access times and failures as for open().
    cv::Descriptor openFolder(std::string_view path) const;

    /// Whether this is the machine's own root.
    bool isMachine() const { return machine_; }

private:
    cv::Descriptor folder_;
    bool machine_;
};

}  // namespace host
