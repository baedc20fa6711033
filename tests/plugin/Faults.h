#pragma once

#include <optional>
#include <string>
#include <vector>

namespace test {

/// What the system calls that the steps rest on do differently from the real ones. All of them work as ever by default.
struct Faults {
    /// The sizes that fstat tells for the install-status file, one a call and then the last one; a missing value lets
    /// the call fail.
    std::vector<std::optional<long long>> statusFileSizes;

    /// Makes fclose of a stream that can only be read fail with EIO, after closing it.
    bool closeFails = false;
};

/// The faults in force.
extern Faults faults;

}  // namespace test
