#pragma once

#include <map>
#include <string>
#include <string_view>

#include "installer-host/look/TypedValue.h"
#include "installer-host/look/ValueBudget.h"

namespace host {

/// What the file of one preference domain holds.
struct PreferenceDomain {
    std::string problem;                     ///< why it cannot be read, to end a sentence with; empty when it can
    std::map<std::string, TypedValue> keys;  ///< empty with a problem
    bool isTooMuch = false;                  ///< the problem is that there was no budget left for it
};

/// What these bytes of the file at `path` hold, if `budget` has room for it. Throws nothing but std::bad_alloc.
PreferenceDomain parsePreferenceDomain(std::string_view path, std::string_view bytes, ValueBudget& budget);

/// Why these bytes of a file are no preference domain, to end a sentence with; empty when they are one. Throws nothing
/// but std::bad_alloc.
std::string damageOf(std::string_view bytes);

/// The same of the file at `path`, which is open at `fd`. Throws nothing but std::bad_alloc.
PreferenceDomain readPreferenceDomain(std::string_view path, int fd, ValueBudget& budget);

}  // namespace host
