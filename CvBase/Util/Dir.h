#pragma once

#include <vector>

#include "CvBase/Util/Exception/FileIO.h"
#include "CvBase/Util/FileTime.h"
#include "CvBase/common/common_path.h"
#include "CvBase/common/common_string.h"

#pragma GCC visibility push(default)

namespace Util {

/// One folder of the file system, by its path. The object caches nothing: every call asks the system.
///
/// Create, Remove, GetTime and SetTime throw Util::Exception::FileIO naming the folder; the others return false or an
/// empty result when the system refuses.
///
/// The path goes to the system as FolderPath::ToString() gives it: ".." is folded in the text first, and a text that
/// folds to a relative one means a folder in the working folder. The empty path means no folder at all, not the root.
/// Symbolic links are followed.
class Dir {
public:
    /// What GetDirInfo() reports about the volume that holds the folder.
    struct DirInfo {
        /// The bytes that an ordinary user can still write to the volume, cut to 32 bits and taken as a signed number:
        /// 3 GiB free give a negative number.
        long long freeBytes = 0;
    };

    /// The empty path.
    Dir() = default;

    /// The folder at `path`, whether it exists or not.
    explicit Dir(const FolderPath& path);

    /// Makes this the folder at `path`.
    void SetPath(const FolderPath& path);

    /// Whether a folder is at the path.
    [[nodiscard]] bool Exists() const;

    /// Fills `info`; false, with `info` unchanged, when the system tells nothing about the volume.
    [[nodiscard]] bool GetDirInfo(DirInfo& info);

    /// Makes the folder, and with `recursive` all that are missing above it, each with the permissions 0755 less the
    /// umask; nothing happens when it exists. Throws WriteError, also when something other than a folder is there;
    /// folders made before the failure stay. With `recursive`, nothing happens for a path that folds to a relative
    /// text, unless that begins with "~/".
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
    /// (and leaves an appended-to `names` unsorted). Links that lead nowhere are left out. After std::bad_alloc, an
    /// appended-to `names` still holds all that it held.
    ///
    /// The first "*" of `filter` stands for anything; a name matches when it begins with what precedes it and ends with
    /// what follows it, ignoring the case of A to Z. "ab*ab" matches "ab" too. "abc", without a star, matches every
    /// name that begins with it, and "" every name. Hidden names are listed like others.
    ///
    /// Whether an entry is a regular file is taken from the folder itself where the system writes it there. A device
    /// that is mounted over a regular file is therefore listed as a file.
    ///
    /// The static ones take the folder as text, just as it is; they list entries with a backslash in their name, which
    /// the others cannot address.
    /// @{

    /// All that is not a regular file: folders, but also devices, pipes and sockets.
    void GetFoldernames(std::vector<String>& names, const String& filter, bool append);
    static void GetFoldernames(const String& folder, std::vector<String>& names, const String& filter, bool append);

    /// Regular files, or with `includeNonFiles` all entries.
    void GetFilenames(std::vector<String>& names, const String& filter, bool append, bool includeNonFiles);
    static void GetFilenames(const String& folder, std::vector<String>& names, const String& filter, bool append,
                             bool includeNonFiles);

    /// @}

    /// Searches `folder` and, if `recursive`, the folders below it, in the listings' order and files before folders,
    /// for a file called `name`, which matches letter by letter. Returns the first one, or the empty path; folders that
    /// cannot be read are passed over. Throws only std::bad_alloc.
    ///
    /// A name without an extension is never found, nor one with a slash. Links are followed, but no folder is searched
    /// twice. Each file that has the extension of `name` but another name adds 1 to `visited`; when that makes it more
    /// than 5000, the search ends without a result. Set `visited` before the call, usually to 0.
    [[nodiscard]] static FilePath FindFile(const String& name, const String& folder, bool recursive,
                                           unsigned int& visited);

private:
    /// The path as the system gets it.
    String text() const;

    FolderPath path_;
};

}  // namespace Util

#pragma GCC visibility pop
