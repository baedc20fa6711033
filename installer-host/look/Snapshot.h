#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "installer-host/look/FinderObject.h"
#include "installer-host/look/PreferenceDomain.h"
#include "installer-host/look/RootFolder.h"

namespace host {

/// What the machine, or a private root, holds of the things that an installation can change.
struct Snapshot {
    /// The property lists in and below /Library/Preferences. The domain is the path from there without ".plist".
    std::map<std::string, PreferenceDomain> domains;
    /// The other files there, by their path from there: corrupt preference files that were moved aside, for example.
    std::set<std::string> otherFiles;
    /// FINDER_OBJECTS.
    std::vector<FinderObject> objects;
    /// The folders of preferences that could not be read, by path, and why, to end a sentence with.
    std::map<std::string, std::string> unreadable;

    /// Whether all could be read.
    bool isComplete() const;
};

/// The preference domain that the file at `path` is, as seen from inside the root; empty when it is none.
std::string domainAt(const std::string& path);

/// Looks at everything. Throws nothing but std::bad_alloc; what cannot be read is described.
Snapshot takeSnapshot(const RootFolder& root);

}  // namespace host
