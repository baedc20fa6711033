#pragma once

#include <string>
#include <vector>

#include "installer-host/look/Changes.h"
#include "installer-host/look/Snapshot.h"

namespace host {

/// What differs between the preferences and Finder flags of two roots.
struct SnapshotDiff {
    std::vector<KeyChange> preferences;  ///< by domain, then by key: Added are those that only the second has
    std::vector<FinderChange> finder;    ///< those that differ
    std::vector<Unreadable> unreadable;  ///< what could not be compared; paths as seen from outside the roots

    bool any() const { return !preferences.empty() || !finder.empty(); }
};

/// A snapshot and the root that it is of; empty: the machine.
struct SnapshotOf {
    const Snapshot& snapshot;
    const std::string& root;
};

/// Compares two snapshots. A domain that could not be read in one of them is not compared.
SnapshotDiff compare(const SnapshotOf& first, const SnapshotOf& second);

}  // namespace host
