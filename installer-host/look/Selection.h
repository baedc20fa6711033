#pragma once

#include <string>

#include "installer-host/look/Snapshot.h"

namespace host {

/// Which preferences somebody wants to see.
struct Selection {
    std::string domain;  ///< empty: all, and the Finder flags
    std::string key;     ///< of the domain; empty: all
};

/// The value that `key` names: the value of that key or, where there is no such key, a part of one: "A/B" is what the
/// dictionary A has under B, and "A/0" the first item of the array A. Null when there is none.
const TypedValue* findValue(const std::map<std::string, TypedValue>& keys, const std::string& key);

/// The part of the snapshot that is selected, the value of a selected key under that name. What could not be read stays
/// where it may hold what is selected.
Snapshot select(Snapshot snapshot, const Selection& selection);

}  // namespace host
