#pragma once

#include <string>
#include <vector>

#include "installer-host/look/EntryChanges.h"
#include "installer-host/look/FinderObject.h"
#include "installer-host/look/PreferenceDomain.h"
#include "installer-host/look/TreeWalk.h"

namespace host {

enum class Change { Added, Changed, Removed, Unchanged };

/// What became of one key of a property list.
struct KeyChange {
    std::string path;    ///< of the file, as seen from inside the root
    std::string domain;  ///< the preference domain that it is; empty for a file outside /Library/Preferences
    std::string key;
    Change change;
    TypedValue before;  ///< a null JSON value for a key that was not there
    TypedValue after;   ///< the same for one that is not there now
};

struct FinderChange {
    FinderObject before;
    FinderObject after;
};

/// Whether the flags, or what is known of them, differ.
bool differs(const FinderChange& change);

/// Something that could not be read.
struct Unreadable {
    enum class Kind {
        Older,   ///< a preference file that could not be read before either, and was left alone
        Stored,  ///< a preference file that was damaged by what was stored in it
        Finder,  ///< the Finder flags of an object, which then cannot have been set either
        Unseen   ///< a file, a folder or what belongs to it
    };
    Kind kind;
    std::string path;
    std::string problem;  ///< to end a sentence with
};

/// What differs between two looks at the same machine.
struct Changes {
    std::vector<EntryChange> entries;    ///< by path; every change that there is
    std::vector<KeyChange> preferences;  ///< by file, then by key: what differs in property lists
    std::vector<FinderChange> finder;    ///< FINDER_OBJECTS, changed or not, and what else changed
    std::vector<Unreadable> unreadable;
    bool storedAnew = false;  ///< a preference domain was written, be it with what it held before

    /// Whether anything but times changed.
    bool any() const;
};

/// What a machine, or a private root, holds.
struct Look {
    Tree tree;
    std::vector<FinderObject> objects;  ///< FINDER_OBJECTS
};

/// Looks at `scope`, as lookAt(), and at the Finder objects.
Look look(
    const RootFolder& root, const std::vector<std::string>& scope, const Look* before = nullptr,
    const std::function<void()>& perFolder = [] {});

/// Compares two looks. Of the preferences that stayed as they were it lists those of the domains that were stored anew,
/// where a key that an earlier run left can be mistaken for one of this run; with `all`, all of them, and times.
Changes compare(const Look& before, const Look& after, bool all);

}  // namespace host
