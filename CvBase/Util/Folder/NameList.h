#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "CvBase/common/common_string.h"

namespace Util {

/// Collects the names of a listing and sorts them into a vector. Sorting looks at eight bytes of each name at once and
/// makes the Strings only then, one behind the other in memory, which costs less than sorting Strings.
class NameList {
public:
    /// Adds the `length` bytes at `name`, which hold no NUL.
    void add(const char* name, std::size_t length);

    /// Sorts the names together with those of `names` into `names`, as operator< orders them. On std::bad_alloc `names`
    /// is as it was.
    void sortInto(std::vector<String>& names) const;

private:
    std::string bytes_;  ///< each name with a NUL behind it
    std::vector<std::size_t> starts_;
};

}  // namespace Util
