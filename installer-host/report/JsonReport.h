#pragma once

#include <optional>
#include <string>

#include "installer-host/Judgement.h"
#include "installer-host/RunResult.h"
#include "installer-host/look/Snapshot.h"

namespace host {

// The reports for a program: one JSON object each, in ASCII, as docs/report.schema.json describes it. Bytes of names
// and preferences that are not UTF-8 become U+FFFD.

/// `judgement` is what the run or the check comes to.
std::string runJson(const RunResult& result, const Judgement& judgement);
std::string checkJson(const RunResult& result, const Judgement& judgement);

/// `root` is empty for the machine itself.
std::string showJson(const Snapshot& snapshot, const std::string& root, const Judgement& judgement);

/// What there is to say when something went wrong before there was anything to report. `command` is unset when the
/// command line did not come to one.
std::string errorJson(std::optional<Command> command, const Judgement& judgement);

}  // namespace host
