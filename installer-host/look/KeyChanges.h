#pragma once

#include <map>
#include <string>
#include <vector>

#include "installer-host/look/Changes.h"
#include "installer-host/look/ValueBudget.h"

namespace host {

/// Compares the keys of a property list; either may be null: there was no such file, or is none now. Adds to `changes`
/// what differs, the other keys as compare() lists them, and what cannot be read or is more than the budget allows.
/// `path` is where the file is now.
void compareKeys(const std::string& path, const Entry* before, const Entry* after, bool all, ValueBudget& budget,
                 Changes& changes);

using Keys = std::map<std::string, TypedValue>;

/// Which property list keys are of; the members are those of KeyChange.
struct KeyPlace {
    std::string path, domain;
};

/// Compares the keys of a property list before and after, and adds to `changes` what differs or, with `listUnchanged`,
/// every key.
void compareKeys(const KeyPlace& place, const Keys& before, const Keys& after, bool listUnchanged,
                 std::vector<KeyChange>& changes);

}  // namespace host
