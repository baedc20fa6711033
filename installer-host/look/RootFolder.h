#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/Descriptor.h"

namespace host {

/// The folder that stands for "/": the machine's own root or a private one. A private root and its folders
/// (PrivateFolders.h) are opened once, never through a link; whoever exchanges them afterwards exchanges nothing here.
class RootFolder {
public:
    /// `path` empty means the machine's root; otherwise it is absolute and without symbolic links. Throws Failure
    /// (RootNotMade) when there is no such folder, or one of the private folders is something else.
    explicit RootFolder(const std::string& path);

    /// Makes the folders of a private root that are missing. Throws Failure (RootNotMade).
    void makePrivateFolders();

    /// Opens `path`, which begins with "/", as seen from inside the root: symbolic links are followed and none leads
    /// out of it. `flags` as for open(2), without O_CREAT; the access time stays as it is where the system lets us. An
    /// invalid descriptor, with errno set, when that fails.
    cv::Descriptor open(const std::string& path, int flags) const;

    /// Opens the folder at `path`, which begins with "/" and may be longer than the system takes at once, for reading
    /// its names. No symbolic link is followed; access times and failures as for open().
    cv::Descriptor openFolder(const std::string& path) const;

    /// Whether this is the machine's own root.
    bool isMachine() const { return machine_; }

    /// The folder itself, which only names it (O_PATH).
    int descriptor() const { return folder_.get(); }

    /// A private folder that there is: its path inside, and the folder itself (O_PATH).
    struct PrivateFolder {
        const char* name;
        cv::Descriptor folder;
    };
    const std::vector<PrivateFolder>& privateFolders() const { return folders_; }

private:
    std::string pathOf(const char* name) const;
    bool openPrivateFolder(const char* name);

    std::string path_;
    cv::Descriptor folder_;
    bool machine_;
    std::vector<PrivateFolder> folders_;
};

}  // namespace host
