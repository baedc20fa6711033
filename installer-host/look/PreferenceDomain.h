#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace host {

/// A value of a property list as data: {"type": TYPE, "value": VALUE}. TYPE is one of string, integer, real, boolean,
/// date, data, array, dictionary and uid. A date is text in ISO 8601, data is hexadecimal text, and a real that
/// JSON cannot write is text ("nan", "inf", "-inf"); arrays and dictionaries hold values of this kind again.
using TypedValue = nlohmann::json;

/// Two hexadecimal digits for each byte.
std::string hexText(std::string_view bytes);

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
