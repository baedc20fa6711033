#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// One line of a file with cases.
struct CaseLine {
    std::int32_t product = 0;
    std::int32_t language = 0;
    std::string status;  ///< empty: not given
};

/// Reads a file with cases: CSV with a header (product, and language and status where they are wanted, in any order),
/// or a JSON array of objects with these members. Throws Failure: RootNotMade when it cannot be read, Usage, with the
/// line or the number of the case, when it is wrong.
std::vector<CaseLine> readCasesFile(const std::string& file);

}  // namespace host
