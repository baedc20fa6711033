#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// A time of the disk, to the nanosecond.
struct DiskTime {
    std::int64_t seconds = 0;  ///< since 1970
    std::uint32_t nanoseconds = 0;
};

inline bool operator==(DiskTime a, DiskTime b) {
    return a.seconds == b.seconds && a.nanoseconds == b.nanoseconds;
}
inline bool operator!=(DiskTime a, DiskTime b) {
    return !(a == b);
}

/// Identifies an object on the disk, even against a later one that gets the same inode number.
struct Identity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::optional<DiskTime> birth;  ///< unset where the file system keeps none
};

/// What the system knows about an entry without opening it.
struct Status {
    std::uint32_t mode = 0;  ///< type and permissions, as st_mode has them
    std::uint32_t owner = 0;
    std::uint32_t group = 0;
    std::uint32_t links = 0;
    std::uint64_t size = 0;
    std::uint64_t deviceNumber = 0;  ///< of a device: major number in the upper half, minor number in the lower
    DiskTime modified;
    DiskTime changed;
    Identity identity;
};

/// What few entries have, or what has to be known before it is gone.
struct Details {
    std::string target;                             ///< of a link
    std::map<std::string, std::string> attributes;  ///< the extended attributes, by name
    std::optional<std::string> propertyList;        ///< the bytes of a file whose name ends in ".plist"
    std::string propertyListProblem;                ///< why they could not be read, to end a sentence with
};

/// A file, folder, link or special file as it was at one look.
struct Entry {
    std::string name;  ///< without the folder; "/" for the root
    Status status;
    std::string problem;  ///< why part of it is unknown, to end a sentence with; empty when all is known
    bool hasStatus = false;
    std::shared_ptr<const Details> details;  ///< null where there are none
};

/// The entries of one folder.
struct Folder {
    std::string problem;         ///< why they are not all known, to end a sentence with; empty when they are
    std::vector<Entry> entries;  ///< by name
};

/// All that lies in the scope of a look, by the path of the folder as seen from inside the root: "/Library". The
/// folder "" holds the scope itself.
struct Tree {
    std::map<std::string, Folder> folders;
};

/// The path of an entry of the folder at `folder`.
inline std::string pathOf(const std::string& folder, const std::string& name) {
    return folder.empty() ? name : folder == "/" ? folder + name : folder + "/" + name;
}

/// What the entry has besides its status; empty details where there are none.
const Details& detailsOf(const Entry& entry);

/// Whether the two are the same object of the disk. Where no birth times are kept, numbers alone decide.
bool isSameObject(const Entry& a, const Entry& b);

/// Whether nothing of the two can differ: each change of an object changes the time of its last change.
bool isUntouched(const Entry& before, const Entry& after);

}  // namespace host
