#pragma once

#include <sys/stat.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>

namespace host {

/// A value of a property list as data: {"type": TYPE, "value": VALUE}. TYPE is one of string, integer, real, boolean,
/// date, data, array, dictionary and uid. A date is text in ISO 8601, data is hexadecimal text, and a real that
/// JSON cannot write is text ("nan", "inf", "-inf"); arrays and dictionaries hold values of this kind again.
using Value = nlohmann::json;

/// What one preference file holds.
struct PreferenceFile {
    std::string problem;                ///< why it cannot be read, to end a sentence with; empty when it can
    std::map<std::string, Value> keys;  ///< empty with a problem
    struct stat status {};              ///< tells a file that was stored anew from one left alone
};

/// Reads the file that is open at `fd`. Throws nothing but std::bad_alloc.
PreferenceFile readPreferenceFile(int fd);

/// The value for a reader: "fr", 2, 1.5, true, 2026-01-02T03:04:05Z, <00ff>, ["a", 1], {"key": "text"}. Long data is
/// cut.
std::string describe(const Value& value);

}  // namespace host
