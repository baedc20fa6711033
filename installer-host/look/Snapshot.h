#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "installer-host/look/PreferenceDomain.h"
#include "installer-host/look/RootFolder.h"

namespace host {

/// The objects that an installation sets the Finder flags of: the vendor's folder and the icon file in it.
constexpr const char* FINDER_OBJECTS[] = {"/Applications/Corvane", "/Applications/Corvane/Icon\r"};

/// The Finder information of a file or folder.
struct FinderObject {
    std::string path;
    bool exists = false;
    std::string problem;      ///< why the Finder flags cannot be read, to end a sentence with; empty when they can
    std::uint16_t flags = 0;  ///< 0 for an object that has no Finder information
};

/// What the machine, or a private root, holds of the things that an installation can change.
struct Snapshot {
    /// The property lists in and below /Library/Preferences. The domain is the path from there without ".plist".
    std::map<std::string, PreferenceFile> domains;
    /// The other files there, by their path from there: corrupt preference files that were moved aside, for example.
    std::set<std::string> otherFiles;
    /// FINDER_OBJECTS.
    std::vector<FinderObject> objects;
};

/// Looks at everything. Never throws for what it finds; what cannot be read is described.
Snapshot takeSnapshot(const RootFolder& root);

}  // namespace host
