#pragma once

#include <string>

#include "installer-host/look/Changes.h"

namespace host {

// What more than one line of the reports, or both forms of them, say alike.

/// The value for a reader: "fr", 2, 1.5, true, 2026-01-02T03:04:05Z, <00ff>, ["a", 1], {"key": "text"}. Long data is
/// cut.
std::string describe(const TypedValue& value);

/// What is said of a key that stayed as it was.
std::string unchangedNote(const KeyChange& change);

/// What is said of something that cannot be read.
std::string sentence(const Unreadable& unreadable);

}  // namespace host
