#pragma once

#include <dirent.h>
#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <utility>

#include "CvBase/common/common_path.h"

namespace Util {

/// Reads the entries of one folder, in the order in which the system gives them, without "." and "..", and tells of
/// each what it is.
///
/// What an entry is follows from a stat() of its path. That is spared where the folder itself says that the entry is a
/// regular file and the answer could be no other: an earlier one shows that the folder may be searched, and the path
/// leads to this very entry. (A regular file over which something else is mounted therefore counts as the file.)
class FolderScan {
public:
    enum class Kind {
        File,     ///< a regular file
        Folder,   ///< anything else: folders, but devices, pipes and sockets too
        Missing,  ///< a stat() fails: a link that leads nowhere, a folder that may not be searched
    };

    /// Opens the folder at `text`. An entry's path is `text`, "/" and its name.
    explicit FolderScan(const char* text);

    /// Opens the folder at `text`, which is that of `path`. An entry's path is the FilePath `path` + its name, which
    /// can lead elsewhere: a backslash in the name separates, and ".." in the path can fold differently.
    FolderScan(const char* text, const FolderPath& path);

    bool isOpen() const { return folder_ != nullptr; }

    /// The open folder's device and inode.
    std::pair<dev_t, ino_t> identity() const;

    /// Goes to the next entry; false behind the last one.
    bool next();

    /// The entry's name, good until the next call of next().
    const char* name() const { return entry_->d_name; }
    std::size_t nameLength() const { return nameLength_; }

    /// Whether the folder itself says that the entry is a regular file. Then, where entries go by the text, its kind is
    /// File or Missing.
    bool isCalledFile() const { return entry_->d_type == DT_REG; }

    /// What the entry is. Symbolic links are followed.
    Kind kind();

    /// As kind(), but taking the folder's word for a sub-folder as well: it may turn out that it cannot be opened.
    Kind likelyKind();

private:
    /// Whether the entry's path leads to the entry itself.
    bool leadsToEntry() const;

    struct Close {
        void operator()(DIR* folder) const { closedir(folder); }
    };

    std::unique_ptr<DIR, Close> folder_;
    const FolderPath path_;      ///< empty when entries go by the text
    std::size_t startLength_;    ///< of the path in front of a name; 0 when that is not the folder's own text
    bool isSearchable_ = false;  ///< known to be
    const dirent* entry_ = nullptr;
    std::size_t nameLength_ = 0;
};

}  // namespace Util
