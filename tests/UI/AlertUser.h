#pragma once

#include <string>
#include <vector>

#include "tests/support/Process.h"

namespace test {

using Strings = std::vector<std::string>;

/// Runs alert_user.py with these arguments (the script tells which) under an X server and a session bus of its own.
ProcessResult runAlertUser(const Strings& arguments, const ProcessOptions& options = {});

/// What follows `keyword` and a blank in each line of the output that starts so.
Strings linesWith(const std::string& output, const std::string& keyword);

}  // namespace test
