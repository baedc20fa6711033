#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <string>

namespace host {

/// An entry that is copied, on both sides.
struct CopiedEntry {
    int from;                ///< the open folder that it is in
    std::string fromName;    ///< its name there
    int to;                  ///< the open folder that its copy is in
    std::string name;        ///< its copy's name
    std::string path;        ///< where it is on the machine, for messages
    std::string copied;      ///< the copy's path from the top of all copies
    struct statx status {};  ///< what it is
};

/// Throws the Failure (RootNotMade) that says why the entry cannot be copied.
[[noreturn]] void refuseCopy(const CopiedEntry& entry, const std::string& reason);

/// The same for a call that failed: `what` it was to do, and errno says why it did not.
[[noreturn]] void refuseCopyByErrno(const CopiedEntry& entry, const std::string& what);

/// Looks at the entry, and refuses it when it has attributes that no copy can have.
void readStatus(CopiedEntry& entry);

/// Gives the copy, whose content is complete, the owner, the extended attributes, the mode, the access lists and the
/// times of the entry. Refuses when one cannot be given.
void copyAttributes(const CopiedEntry& entry);

}  // namespace host
