#pragma once

#include <vector>

#include "CvBase/Util/Exception/FileIO.h"
#include "CvBase/Util/FileTime.h"
#include "CvBase/common/common_path.h"
#include "CvBase/common/common_string.h"

#pragma GCC visibility push(default)

namespace Util {

/// One folder of the file system, by its path. Nothing about the folder is kept: every call asks anew.
///
/// The operations that change or time the folder throw Util::Exception::FileIO naming it; the others answer false or
/// nothing when the system refuses.
///
/// The path goes to the system as FolderPath::ToString() gives it: ".." is folded in the text first, and a text that
/// folds to a relative one means a folder in the working folder. No path means no folder, and not the root. Symbolic
/// links are followed.
class Dir {
public:
    /// What GetDirInfo() tells of the volume that holds the folder.
    struct DirInfo {
        /// What an ordinary user may still fill of the volume, in bytes, but only its lower 32 bits as a signed number:
        /// with 3 GiB free it is negative.
        long long freeBytes = 0;
    };

    /// No path.
    Dir() = default;

    /// The folder at `path`, whether it exists or not.
    explicit Dir(const FolderPath& path);

    /// Makes this the folder at `path`.
    void SetPath(const FolderPath& path);

    /// Whether a folder is at the path.
    [[nodiscard]] bool Exists() const;

    /// Fills `info`; false, with `info` untouched, when the volume cannot be asked.
    [[nodiscard]] bool GetDirInfo(DirInfo& info);

    /// Makes the folder, and with `recursive` all that are missing above it, each with the permissions 0755 less the
    /// umask; nothing happens when it exists. Throws WriteError; folders made before the failure stay. With
    /// `recursive`, a path that folds to a relative text is ignored silently.
    void Create(bool recursive);

    /// Removes the folder, which must be empty; nothing happens when it does not exist. Throws RemoveError, also for a
    /// symbolic link to a folder.
    void Remove();

    /// Reads the times of use and change into `*time`, which must not be null. Throws UnexpectedError.
    void GetTime(FileTime* time);

    /// Sets the times of use and change. Throws UnexpectedError.
    void SetTime(const FileTime& time);

    /// @name Listings
    /// Put the bare names of the folder's entries into `names`, in place of what it held or, with `append`, beside it,
    /// and sort all of `names` by operator<: byte by byte, capitals first. A folder that cannot be read gives nothing
    /// (and leaves an appended-to `names` unsorted). Links that lead nowhere are left out. std::bad_alloc loses no
    /// name that was appended to.
    ///
    /// The first "*" of `filter` stands for anything; a name matches when it begins with what precedes it and ends with
    /// what follows it, ignoring the case of A to Z. "ab*ab" matches "ab" too, "abc" without a star matches all that
    /// begins with it, and "" all. Hidden names are listed like others.
    ///
    /// Whether an entry is a regular file is taken from the folder itself where the system writes it there. A device
    /// that is mounted over a regular file is therefore listed as a file.
    ///
    /// The static ones take the folder as text, just as it is; they list entries with a backslash in their name, which
    /// the others cannot address.
    /// @{

    /// All entries but regular files: folders, and devices, pipes and sockets too.
    void GetFoldernames(std::vector<String>& names, const String& filter, bool append);
    static void GetFoldernames(const String& folder, std::vector<String>& names, const String& filter, bool append);

    /// Regular files, or with `includeNonFiles` all entries.
    void GetFilenames(std::vector<String>& names, const String& filter, bool append, bool includeNonFiles);
    static void GetFilenames(const String& folder, std::vector<String>& names, const String& filter, bool append,
                             bool includeNonFiles);

    /// @}

    /// Searches `folder` and, if `recursive`, the folders below it, in the listings' order and files before folders,
    /// for a file called `name`, which matches letter by letter. Gives the first one, or an empty path.
    ///
    /// A name without an extension is never found, nor one with a slash. Links are followed, but no folder is searched
    /// twice. Each file with the extension of `name` that is another file adds one to `visited`; the search ends
    /// without a result when that makes it more than 5000. The caller sets `visited` before, usually to 0.
    [[nodiscard]] static FilePath FindFile(const String& name, const String& folder, bool recursive,
                                           unsigned int& visited);

private:
    /// The path as the system gets it.
    String text() const;

    FolderPath path_;
};

}  // namespace Util

#pragma GCC visibility pop
