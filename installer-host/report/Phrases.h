#pragma once

#include <optional>
#include <string>

#include "installer-host/RunResult.h"

namespace host {

// What more than one line of the reports, or both forms of them, say alike.

/// The value for a reader: "fr", 2, 1.5, true, 2026-01-02T03:04:05Z, <00ff>, ["a", 1], {"key": "text"}. Long data is
/// cut.
std::string describe(const TypedValue& value);

/// How reports describe a key that stayed as it was.
std::string unchangedNote(const KeyChange& change);

/// How reports describe something that cannot be read, in two parts: what it is, and why.
struct Complaint {
    std::string what;
    std::string why;
};
Complaint complaint(const Unreadable& unreadable);

/// "file", "folder", "link", "FIFO", "socket", "character device" or "block device".
std::string typeName(const Entry& entry);

/// The permissions as four octal digits: "0644".
std::string modeText(const Entry& entry);

/// The number of a device: "1:3".
std::string deviceText(const Entry& entry);

/// A time in ISO 8601, in UTC: to the second, or with nanoseconds where `exact` asks for them.
std::string timeText(DiskTime time, bool exact);
std::string timeText(std::chrono::system_clock::time_point time);

/// The names of the Finder flags that are set, as the system's headers have them: "invisible, custom icon".
std::string flagNames(std::uint16_t flags);

/// How much changed.
struct Counts {
    std::size_t created = 0, removed = 0, changed = 0, moved = 0;  ///< files, folders, links and special files
    std::size_t times = 0;                                         ///< of which nothing but the times changed
    std::size_t keysAdded = 0, keysChanged = 0, keysRemoved = 0;   ///< in property lists
    std::size_t finderFlags = 0;                                   ///< objects with other Finder flags
};
Counts countsOf(const Changes& changes);

/// A sentence that sums up what changed on the disk.
std::string summaryOf(const RunResult& result);

}  // namespace host
