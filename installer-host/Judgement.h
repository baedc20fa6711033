#pragma once

#include <string>

#include "installer-host/RunResult.h"

namespace host {

/// What a run or a check comes to.
struct Judgement {
    ExitStatus status = ExitStatus::Done;
    std::string message;  ///< for the user; empty with Done
};

/// Judges by the result alone. When several things went wrong, the first of this order counts: a fault in a step, the
/// time-out, an end outside of a step, the failure bit, something that was not stored. Of a check it is the first
/// finding that is not ok.
Judgement judge(const RunResult& result);

}  // namespace host
