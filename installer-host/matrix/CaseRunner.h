#pragma once

#include <functional>
#include <vector>

#include "installer-host/matrix/CaseProcess.h"

namespace host {

/// Called when a case is over, with how many are and how many of them failed.
using CaseProgress = std::function<void(std::size_t done, std::size_t failed)>;

/// Runs all cases of the list, as many at a time as the options say. Returns what became of them, in the order of the
/// list. When the user ends the matrix, the running cases are ended, no more are begun, and `signal` is set.
std::vector<CaseResult> runCases(const CaseSettings& settings, const CaseProgress& progress, int& signal);

}  // namespace host
