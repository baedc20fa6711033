#pragma once

#include <string>
#include <vector>

namespace test {

/// Runs the command, and kills it with all that it started before the system call number `call` by which one of its
/// processes whose name begins with `name` would change the disk. False when they made fewer such calls, and the
/// command came to its end.
bool runAndKill(const std::vector<std::string>& command, const std::string& name, int call);

/// Runs the command, and kills it before its process with this very name begins a change of the disk, or another
/// program, although its change before that is not flushed. True when it began none, and the command came to its end.
bool flushesEachChange(const std::vector<std::string>& command, const std::string& name);

}  // namespace test
