#pragma once

#include <map>
#include <string>
#include <string_view>

#include "installer-host/look/TypedValue.h"

namespace host {

/// What the file of one preference domain holds.
struct PreferenceDomain {
    std::string problem;                     ///< why it cannot be read, to end a sentence with; empty when it can
    std::map<std::string, TypedValue> keys;  ///< empty with a problem
};

/// What these bytes of a file hold. Throws nothing but std::bad_alloc.
PreferenceDomain parsePreferenceDomain(std::string_view bytes);

/// Reads the file that is open at `fd`. Throws nothing but std::bad_alloc.
PreferenceDomain readPreferenceDomain(int fd);

}  // namespace host
