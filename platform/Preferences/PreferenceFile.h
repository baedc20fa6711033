#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/PropertyList/Value.h"
#include "platform/Result.h"

namespace cv {

/// Where the preferences of one domain are kept.
struct PreferenceLocation {
    std::string folder;  ///< absolute
    std::string name;    ///< of the file in it
    std::string path() const { return folder + "/" + name; }
};

/// Changes to make: a value for each key, or none to remove the key.
using PreferenceChanges = std::map<std::string, std::optional<plist::Value>>;

/// The dictionary that the file holds; nothing when there is no file, it cannot be read, or it holds something else.
/// Waits for no lock: writers put a whole new file in the place of the old one. Throws std::bad_alloc.
std::optional<plist::Dictionary> readPreferences(const PreferenceLocation& location);

/// Makes the changes in the file and leaves its other keys as they are. Returns nothing once the new file is on the
/// disk, and otherwise what went wrong. After a fault the old file is whole and in its place; only if just the last
/// flush of the folder failed, the new file is there.
///
/// Throws std::bad_alloc when memory ran out, the system's own included. The file is then as after a fault, and it is
/// never taken for damaged for that reason. The same call may be made again.
///
/// Takes an exclusive lock on the folder and waits for it, so that programs that write at the same time lose none of
/// each other's keys. The process may be killed at any moment: the file is the old one or the new one. A temporary file
/// that a killed process left is removed by the next call for the same folder.
///
/// A missing folder is made. If what is in the file's place holds no dictionary, or is a symbolic link, it is kept
/// under the first free name of NAME.corrupt-1, NAME.corrupt-2, ..., and a line on standard error says so; a link's
/// target is neither read nor written. Where it cannot have a second name (on FAT, or when it belongs to another user),
/// it is moved there, and a process that is killed right then leaves nothing in the file's place. A folder, a pipe or a
/// device in the file's place, and a property list that cannot be rewritten without loss, are left alone and are
/// errors.
std::optional<Fault> writePreferences(const PreferenceLocation& location, const PreferenceChanges& changes);

}  // namespace cv
