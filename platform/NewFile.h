#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "platform/Descriptor.h"

namespace cv {

/// A file that is written under a temporary name and then put in its place whole: whoever reads there finds what was
/// there before or all of the new file, also after the writer was killed or the machine lost its power. At the end of
/// the scope it is removed, unless it was put in its place.
///
/// Each function throws a Fault that names the file by its path, or std::bad_alloc when memory ran out, the system's
/// own included.
class NewFile {
public:
    /// Makes the file in `folder`, which is open for reading; both outlive this object. `path` is where it is to be,
    /// for faults. `prefix` begins its temporary name (isTemporaryName()). `mode` is as for open(2).
    NewFile(int folder, std::string path, std::string_view prefix, mode_t mode);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// The open file.
    int descriptor() const { return file_.get(); }

    /// Writes its bytes, and flushes them and what else there is of it to the disk.
    void write(std::string_view bytes) const;
    void flush() const;

    /// Puts it in the place of the entry `name` in the folder, whatever is there but a folder, and flushes the folder.
    /// If only that failed, the file is in its place.
    void replace(const std::string& name);

    /// The same where nothing stands; a fault when anything does.
    void make(const std::string& name);

private:
    int folder_;
    std::string path_, temporary_;
    Descriptor file_;
};

/// Whether a file of this name is one that NewFile gave its temporary name. The prefix is that of its writers.
bool isTemporaryName(std::string_view name, std::string_view prefix);

/// Throws the Fault of a system call that failed with this errno value, or std::bad_alloc for the lack of memory.
[[noreturn]] void failWith(const std::string& path, int error);

/// Flushes the folder's entries to the disk; file systems that cannot do that do it by themselves. Throws as above.
void flushFolder(int folder, const std::string& path);

}  // namespace cv
