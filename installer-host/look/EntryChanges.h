#pragma once

#include <optional>
#include <string>
#include <vector>

#include "installer-host/look/Tree.h"

namespace host {

/// In what an entry differs from what it was.
struct Differences {
    bool type = false;
    bool contents = false;
    /// It was written or replaced, or its times were set, and its size stayed: what it held before is not known.
    bool maybeContents = false;
    bool mode = false;
    bool owner = false;  ///< or group
    bool attributes = false;
    bool target = false;  ///< of a link
    bool device = false;  ///< the number of a device
    bool times = false;   ///< or it was replaced by its like

    /// Whether anything but the times differs.
    bool any() const { return type || contents || maybeContents || mode || owner || attributes || target || device; }
};

/// What became of one file, folder, link or special file.
struct EntryChange {
    enum class Kind {
        Created,
        Removed,
        Changed,
        Moved,  ///< it is the same object under another name, which may differ in other things, too
        Times   ///< nothing but its times differs
    };
    Kind kind;
    std::string path;               ///< as seen from inside the root; of something removed, where it was
    std::string from;               ///< Moved: where it was
    std::optional<Entry> before;    ///< unset for Created
    std::optional<Entry> after;     ///< unset for Removed
    Differences differs;            ///< of Changed and Moved
    std::optional<Entry> replaced;  ///< Moved: what was there before, and is gone
};

/// Something that could not be looked at.
struct Unseen {
    std::string path;
    std::string problem;  ///< to end a sentence with
};

/// What differs between two looks at the same scope.
struct EntryChanges {
    std::vector<EntryChange> changes;  ///< by path
    std::vector<Unseen> unseen;        ///< by path
};

/// Compares two looks. Of a folder that was unreadable in one of them only that is reported. A folder is not
/// listed for what its entries caused, and an entry that moved with its folder only if it differs.
EntryChanges compareEntries(const Tree& before, const Tree& after);

}  // namespace host
