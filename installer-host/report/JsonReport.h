#pragma once

#include <string>

#include "installer-host/RunResult.h"

namespace host {

// The reports for a program. docs/installer-host.1 lists their keys, which stay as they are as long as "schema" is 1.
// Bytes of preferences that are no UTF-8 become U+FFFD.

/// `status` is what the run comes to.
std::string runJson(const RunResult& result, ExitStatus status);
std::string checkJson(const RunResult& result);

/// `root` is empty for the machine itself.
std::string showJson(const Snapshot& snapshot, const std::string& root);

}  // namespace host
