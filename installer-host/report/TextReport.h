#pragma once

#include <string>

#include "installer-host/RunResult.h"
#include "installer-host/look/Snapshot.h"

namespace host {

// The reports for a reader. Bytes of preferences that are not UTF-8 are escaped.

std::string runText(const RunResult& result);
std::string runBody(const RunResult& result);  ///< the same without its head, which says what was run where
std::string checkText(const RunResult& result);

/// `root` is empty for the machine itself.
std::string showText(const Snapshot& snapshot, const std::string& root);

}  // namespace host
