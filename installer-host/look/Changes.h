#pragma once

#include <string>
#include <vector>

#include "installer-host/look/Snapshot.h"

namespace host {

enum class Change { Added, Changed, Removed, Unchanged };

/// What became of one key of a preference domain.
struct KeyChange {
    std::string domain;
    std::string key;
    Change change;
    TypedValue before;  ///< a null JSON value for a key that was not there
    TypedValue after;   ///< the same for one that is not there now
};

/// A file among the preferences that is no property list and came or went.
struct FileChange {
    std::string path;
    Change change;
};

struct FinderChange {
    FinderObject before;
    FinderObject after;
};

/// Something that cannot be read after the run.
struct Unreadable {
    enum class Kind {
        Older,   ///< a preference file that could not be read before either, and was left alone
        Stored,  ///< a preference file that could be read before, or was stored since
        Finder   ///< the Finder flags of an object, which then cannot have been set either
    };
    Kind kind;
    std::string path;
    std::string problem;  ///< to end a sentence with
};

/// What differs between two looks at the same machine.
struct Changes {
    std::vector<KeyChange> preferences;  ///< by domain, then by key
    std::vector<FileChange> files;       ///< by path
    std::vector<FinderChange> finder;    ///< every object, changed or not
    std::vector<Unreadable> unreadable;
};

/// Compares two snapshots. Of the preferences that stayed as they were it lists those of the domains that were stored
/// anew, where a key that an earlier run left can be mistaken for one of this run; with `all`, all of them.
Changes compare(const Snapshot& before, const Snapshot& after, bool all);

}  // namespace host
