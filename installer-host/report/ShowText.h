#pragma once

#include <string>

#include "installer-host/look/Selection.h"
#include "installer-host/look/SnapshotDiff.h"

namespace host {

// The reports of `show` for a reader. A root is empty for the machine itself.

/// All that the snapshot has, with control characters escaped.
std::string showText(const Snapshot& snapshot, const std::string& root);

/// What select() left. Of a domain, a line for each key, as above. Of a key, the value alone, as it is: text without
/// quotes, numbers in decimal, data as hexadecimal digits, dates in ISO 8601, arrays and dictionaries as JSON.
std::string selectionText(const Snapshot& snapshot, const Selection& selection);

/// What could not be read of it; empty when all could.
std::string unreadableText(const Snapshot& snapshot);

/// What differs between the first root and the second.
std::string diffText(const SnapshotDiff& diff, const std::string& first, const std::string& second);

/// What could not be compared; empty when all could.
std::string unreadableText(const SnapshotDiff& diff);

}  // namespace host
