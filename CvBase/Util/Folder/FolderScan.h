#pragma once

#include <dirent.h>

#include <cstddef>
#include <memory>
#include <string>

#include "CvBase/common/common_path.h"

namespace Util {

/// Reads the entries of one folder, in the order in which the system gives them, without "." and "..", and tells what
/// each one is.
///
/// A stat() of an entry's path says what the entry is. The call is left out when its result is known: the folder's own
/// record calls the entry a regular file, the path leads to this very entry, and an earlier stat() showed that the
/// folder may be searched. A list of 100,000 files takes 53 ms this way, and 260 ms with a stat() of each. (The one
/// difference: a regular file over which something else is mounted counts as the file.)
class FolderScan {
public:
    /// What an entry is, links followed.
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

    /// Whether the folder could be opened. Without that, only the destructor may be called.
    bool isOpen() const { return folder_ != nullptr; }

    /// Goes to the next entry; false after the last one.
    bool next();

    /// The entry's name, valid until the next call of next().
    const char* name() const { return entry_->d_name; }
    std::size_t nameLength() const { return nameLength_; }

    /// Whether the folder's own record calls the entry a regular file. If entries go by the text, its kind is File or
    /// Missing then.
    bool isCalledFile() const { return entry_->d_type == DT_REG; }

    /// What the entry is. Symbolic links are followed.
    Kind kind();

    /// As kind(), but without a stat() of what the folder's record calls a folder. It may turn out that it cannot be
    /// opened.
    Kind likelyKind();

private:
    /// Whether the entry's path leads to the entry itself.
    bool leadsToEntry() const;

    /// The entry's path, good until the next call; only where it leads to the entry itself.
    const char* entryPath();

    struct Close {
        void operator()(DIR* folder) const { closedir(folder); }
    };

    std::unique_ptr<DIR, Close> folder_;
    const FolderPath path_;      ///< empty when entries go by the text
    std::string entryPath_;      ///< the folder's text with "/" at its end, and maybe a name
    std::size_t startLength_;    ///< of the path in front of a name; 0 when that is not the folder's own text
    bool isSearchable_ = false;  ///< known to be
    const dirent* entry_ = nullptr;
    std::size_t nameLength_ = 0;
};

}  // namespace Util
