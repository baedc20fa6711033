#pragma once

#include <dirent.h>
#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <utility>

#include "CvBase/common/common_string.h"

namespace Util {

/// Reads the entries of one folder, in the order in which the system gives them, without "." and "..", and tells of
/// each what it is.
///
/// What an entry is follows from a stat() of its path. That is spared where the folder itself says that the entry is a
/// regular file and the answer could be no other: the folder may be searched and the path leads to this very entry. (A
/// regular file over which something else is mounted therefore counts as the file.)
class FolderScan {
public:
    enum class Kind {
        FILE,     ///< a regular file
        FOLDER,   ///< anything else: folders, but devices, pipes and sockets too
        MISSING,  ///< a stat() fails: a link that leads nowhere, a folder that may not be searched
    };

    /// Opens the folder at the text `folder`. `pathOf` gives the text by which the entry of a name is looked at.
    FolderScan(const String& folder, std::function<String(const String& name)> pathOf);

    bool isOpen() const { return folder_ != nullptr; }

    /// The open folder's device and inode.
    std::pair<dev_t, ino_t> identity() const { return identity_; }

    /// Goes to the next entry; false behind the last one.
    bool next();

    /// The entry's name, good until the next call of next().
    const char* name() const { return entry_->d_name; }
    std::size_t nameLength() const { return nameLength_; }

    /// What the entry is. Symbolic links are followed.
    Kind kind() const;

    /// As kind(), but taking the folder's word for a sub-folder as well: it may turn out that it cannot be opened.
    Kind likelyKind() const;

private:
    /// Whether the entry's path is the folder's with the name behind it, short enough for the system.
    bool hasPlainPath() const;

    struct Close {
        void operator()(DIR* folder) const { closedir(folder); }
    };

    std::function<String(const String&)> pathOf_;
    std::unique_ptr<DIR, Close> folder_;
    std::pair<dev_t, ino_t> identity_{};
    std::size_t plainLength_ = 0;  ///< of the path in front of a name; 0 when paths are not made by putting it there
    bool isSearchable_ = false;
    const dirent* entry_ = nullptr;
    std::size_t nameLength_ = 0;
};

}  // namespace Util
