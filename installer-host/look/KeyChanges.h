#pragma once

#include "installer-host/look/Changes.h"

namespace host {

/// Compares the keys of a property list; either may be null: there was no such file, or is none now. Adds to `changes`
/// what differs, the other keys as compare() lists them, and what cannot be read. `path` is where the file is now.
void compareKeys(const std::string& path, const Entry* before, const Entry* after, bool all, Changes& changes);

}  // namespace host
