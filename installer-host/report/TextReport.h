#pragma once

#include <string>
#include <vector>

#include "installer-host/Result.h"

namespace host {

/// The report of a run, of a look at the machine and of a check, as text or as JSON with "schema": 1. Bytes of
/// preferences that are no UTF-8 are escaped in text and become U+FFFD in JSON.
std::string runReport(const RunResult& result);
std::string showReport(const Snapshot& snapshot, const Options& options);
std::string checkReport(const std::string& bundle, const std::vector<Finding>& findings, Format format);

}  // namespace host
