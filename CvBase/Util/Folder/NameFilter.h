#pragma once

#include <cstddef>
#include <string>

#include "CvBase/common/common_string.h"

namespace Util {

/// A wildcard for the names of a listing. The first "*" of the filter stands for anything; a name matches when it
/// begins with what precedes the "*" and ends with what follows it, where the two may overlap ("ab*ab" matches "ab").
/// Later stars are ordinary characters. A filter without "*" matches what begins with it, and an empty one everything.
/// ASCII letters match in either case.
class NameFilter {
public:
    explicit NameFilter(const String& filter);

    /// Whether the `length` bytes at `name` match.
    bool matches(const char* name, std::size_t length) const;

private:
    std::string prefix_, suffix_;  ///< in lower case
};

}  // namespace Util
