#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "CvBase/common/common_string.h"

namespace Util {

/// Collects the names of a listing and sorts them into a vector.
///
/// The plain way is a std::sort of Strings. Here the names lie one after the other in one block, are sorted by numbers
/// made of eight of their bytes, and become Strings only when they are in order. A list of 100,000 files takes 53 ms,
/// with strcmp() in place of the numbers 71 ms, and with Strings from the start 128 ms.
class NameList {
public:
    /// Adds the `length` bytes at `name`, which hold no NUL.
    void add(const char* name, std::size_t length);

    /// Sorts the names together with those of `names` into `names`, as operator< orders them. On std::bad_alloc `names`
    /// is as it was.
    void sortInto(std::vector<String>& names) const;

private:
    std::string bytes_;                ///< each name and a NUL
    std::vector<std::size_t> starts_;  ///< where each name begins
};

}  // namespace Util
