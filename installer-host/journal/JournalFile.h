#pragma once

#include <sys/stat.h>

#include <functional>
#include <string>

#include "installer-host/journal/Journal.h"
#include "platform/Descriptor.h"
#include "platform/Preferences/LockedFolder.h"

namespace host {

/// The file of one journal. It is its owner's alone (mode 0600), a symbolic link in its place is never followed, and
/// each writing puts a whole new file, flushed to the disk, in the place of the old one.
class JournalFile {
public:
    /// Finds the folder that the file is to lie in, or lies in. `perWait` is called while another process writes a
    /// journal in the same folder; what it throws ends the wait. Throws Failure.
    JournalFile(const std::string& path, std::function<void()> perWait);

    /// Makes the file for a new journal, which gets its path. Throws Failure when something stands there already, or
    /// the file cannot be made.
    void make(Journal& journal);

    /// Reads the journal. Throws Failure when this user cannot trust or read it.
    Journal read();

    /// Its absolute path.
    const std::string& path() const { return path_; }

    /// Puts the journal in the place of what the file holds. Throws cv::Fault.
    void write(const Journal& journal);

    /// Removes the file. Throws cv::Fault.
    void remove() const;

private:
    cv::LockedFolder lockFolder() const;

    /// Throws cv::Fault unless what stands in the file's place is the file that this object wrote or read last.
    void requireSame() const;
    void noteIdentity();

    std::function<void()> perWait_;
    cv::Descriptor folder_;
    std::string folderPath_, name_, path_;
    struct stat identity_ {};
};

}  // namespace host
