#pragma once

#include <string>

#include "installer-host/RunResult.h"
#include "installer-host/look/Snapshot.h"

namespace host {

/// What a run or a check comes to.
struct Judgement {
    ExitStatus status = ExitStatus::Done;
    std::string message;  ///< for the user: what happened, and on further lines what to do; empty when all is well
};

/// Judges by the result alone. When several things went wrong, the first of this order counts: a fault in a step, the
/// time-out, an end outside of a step, the failure bit, something that was not
/// stored or could not be looked at, a change that the user asked to be told of. Of a check it is the first
/// finding that is not ok.
Judgement judge(const RunResult& result);

/// The same for what `show` saw.
Judgement judge(const Snapshot& snapshot);

}  // namespace host
