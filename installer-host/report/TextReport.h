#pragma once

#include <string>

#include "installer-host/Result.h"

namespace host {

// The reports for a reader. Bytes of preferences that are no UTF-8 are escaped.

std::string runText(const Result& result);
std::string checkText(const Result& result);

/// `root` is empty for the machine itself.
std::string showText(const Snapshot& snapshot, const std::string& root);

}  // namespace host
