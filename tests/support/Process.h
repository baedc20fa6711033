#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// What a program left behind.
struct ProcessResult {
    int exitStatus = -1;  ///< 0 to 255, or 128 + the signal that ended it
    std::string out;      ///< standard output
    std::string err;      ///< standard error
};

/// How to start a program.
struct ProcessOptions {
    std::string in;                                        ///< what it reads from standard input
    std::string workingFolder;                             ///< empty: this process's
    std::vector<std::pair<std::string, std::string>> set;  ///< environment variables to set, after removing
    std::vector<std::string> unset;                        ///< environment variables to remove
    unsigned user = 0;                                     ///< the user id to run as, when not 0
};

/// Runs `command` (a program found on PATH and its arguments) to its end. Throws std::system_error when it cannot be
/// started.
ProcessResult run(const std::vector<std::string>& command, const ProcessOptions& options = {});

/// Whether `check` answers true in a copy of this process, where it may change what holds for a whole process. What it
/// changes in memory is lost; an exception in it counts as false.
bool holdsInACopy(const std::function<bool()>& check);

/// The same in a copy that is not root: files without permissions are closed to it.
bool holdsForOrdinaryUser(const std::function<bool()>& check);

}  // namespace test
