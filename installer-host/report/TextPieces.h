#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "installer-host/look/Changes.h"
#include "installer-host/report/Lines.h"

namespace host {

// What several reports for a reader have alike.

/// The text, followed by spaces up to `width` characters of ASCII.
std::string padded(const std::string& text, std::size_t width);

/// "this machine", or the private root that is at `root`.
std::string placeText(const std::string& root);

/// "0x0400 (custom icon)", or why there are none.
std::string flagsText(const FinderObject& object);

/// Adds a value and its type to a line.
void addValue(Line& line, const TypedValue& value);

/// The section of the keys that differ. `signs` explains the signs before them; `none` stands there for no keys.
std::string preferencesText(const std::string& signs, const std::vector<KeyChange>& preferences,
                            const std::string& none);

/// The section of the Finder flags.
std::string finderText(const std::vector<FinderChange>& finder);

}  // namespace host
