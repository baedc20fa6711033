#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/Descriptor.h"
#include "platform/NewFile.h"

namespace cv {

/// A folder that this process has the exclusive lock of: whoever else takes the lock before writing changes nothing in
/// it meanwhile. Files in it are replaced whole, so that a process that is killed at any moment leaves the old one or
/// the new one.
///
/// Each function throws a Fault that says what went wrong, or std::bad_alloc when memory ran out, the system's own
/// included.
class LockedFolder {
public:
    /// Takes the lock of `folder`, which is open for reading, and waits for it. `path` names the folder in faults.
    /// While another process has the lock, `perWait` is called every now and then where there is one; what it throws
    /// ends the wait.
    LockedFolder(Descriptor folder, std::string path, const std::function<void()>& perWait = nullptr);

    int descriptor() const { return folder_.get(); }

    /// Where the entry `name` is, for messages.
    std::string pathOf(const std::string& name) const { return path_ + "/" + name; }

    /// Removes the temporary files that killed writers left. Their writers are dead: they had the lock.
    void removeLeftovers() const;

    /// Puts a file with these bytes in the place of `name`, whatever is there but a folder, and flushes it and the
    /// folder to the disk. The file is made for its owner alone; `complete` gives the open file its owner and its mode
    /// before it is flushed. `beforeReplacing`, where there is one, is called when the new file is on the disk under
    /// another name. When anything fails, or one of the two throws, the old file stays; only if the last flush of the
    /// folder failed, the new one is there.
    void replace(const std::string& name, std::string_view bytes, const std::function<void(int fd)>& complete,
                 const std::function<void()>& beforeReplacing = nullptr) const;

    /// The same for a new file: a fault when anything stands in its place.
    void make(const std::string& name, std::string_view bytes, const std::function<void(int fd)>& complete) const;

    /// Removes the file, and flushes the folder.
    void remove(const std::string& name) const;

private:
    Descriptor folder_;
    std::string path_;
};

/// Whether a file of this name is one that LockedFolder writes before it puts it in its place. One that stays was left
/// by a killed writer.
bool isTemporaryName(std::string_view name);

}  // namespace cv
