#pragma once

#include <cstddef>
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

/// The command line that starts `command` here: in a build for another processor, the emulator stands before a program
/// of that build. run() sees to it itself.
std::vector<std::string> startable(std::vector<std::string> command);

/// Runs `command` (a program found on PATH and its arguments) to its end. Throws std::system_error when it cannot be
/// started.
ProcessResult run(const std::vector<std::string>& command, const ProcessOptions& options = {});

/// Does `work` in a copy of this process, which may come to any end and has two minutes. Returns what `work` answers, 0
/// to 255; 255 for an exception, and 128 + the signal that ended the copy.
int endOfCopy(const std::function<int()>& work);

/// Whether `check` answers true in a copy of this process, where it may change what holds for a whole process. What it
/// changes in memory is lost; an exception in it counts as false.
bool holdsInACopy(const std::function<bool()>& check);

/// The same in a copy that is not root: files without permissions are closed to it.
bool holdsForOrdinaryUser(const std::function<bool()>& check);

/// How many descriptors this process has open, and one more.
std::size_t openDescriptors();

}  // namespace test
