#pragma once

#include "installer-host/report/TextReport.h"

namespace host {

// The JSON forms of the reports. docs/installer-host.1 lists their keys, which stay as they are as long as "schema"
// is 1.

std::string runJson(const RunResult& result);
std::string showJson(const Snapshot& snapshot, const std::string& root);
std::string checkJson(const std::string& bundle, const std::vector<Finding>& findings);

/// What both forms say of a preference that stayed as it was.
std::string unchangedNote(const PreferenceChange& change);

}  // namespace host
