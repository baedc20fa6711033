#pragma once

#include <functional>
#include <optional>

#include "installer-host/journal/Journal.h"
#include "installer-host/look/RootFolder.h"
#include "platform/Preferences/LockedFolder.h"

namespace host {

/// The record of a root: which journal is that of its last run that was not undone, so that runs are undone in the
/// reverse of their order. It is a file that goes where the root goes: .installer-host-journal in a private root,
/// beside the folders that the bundle's code can reach, and /var/lib/installer-host/journal for the machine.
///
/// As long as the object lives, no other run with a journal and no undo works on the root.
class RootRecord {
public:
    /// Throws Failure (Usage) when the journal's file at `path`, absolute and without symbolic links, lies in the
    /// bundle, in what the bundle's code sees of the private root at `rootPath` and of the system, or, where `rootPath`
    /// is empty, in what its run looks at or the folder of the machine's record.
    static void requireOutside(const std::string& path, const std::string& rootPath, const Journal& journal);

    /// Makes the folder that the machine's record lies in, if it is missing and may be made.
    static void makeFolder(const RootFolder& root);

    /// Reads the record. Throws Failure (RootNotMade) when another run or undo is at work, or the record cannot be
    /// read.
    RootRecord(const RootFolder& root, const std::string& rootPath);

    /// The journal to be undone first; unset when there is none.
    const std::optional<JournalName>& last() const { return last_; }

    /// Where the record is, on the machine.
    std::string path() const { return folder_.pathOf(name_); }

    /// Removes what a killed writer of the record left. Throws cv::Fault.
    void removeLeftovers() const { folder_.removeLeftovers(); }

    /// Puts another journal on record, or none. Throws cv::Fault.
    void set(const std::optional<JournalName>& last);

private:
    void read();

    std::string name_;
    cv::LockedFolder folder_;
    std::optional<JournalName> last_;
};

}  // namespace host
