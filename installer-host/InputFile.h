#pragma once

#include <string>

namespace host {

/// The bytes of a file that the command line names. `what`, for messages, says what it is: "expectation". Throws
/// Failure (RootNotMade) when it cannot be read.
std::string readInput(const std::string& path, const std::string& what);

}  // namespace host
