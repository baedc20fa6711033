#pragma once

#include <string>

#include "installer-host/RunResult.h"
#include "installer-host/look/Selection.h"
#include "installer-host/look/SnapshotDiff.h"

namespace host {

/// What a run or a check comes to.
struct Judgement {
    ExitStatus status = ExitStatus::Done;
    std::string message;  ///< for the user: what happened, and on further lines what to do; empty when all is well
};

/// Judges by the result alone. When several things went wrong, the first in this order counts: a fault in a step, the
/// time-out, an end outside a step, the failure bit, something that could not be stored or read, a change that the user
/// asked to hear about. For a check, the first finding that is not ok counts.
Judgement judge(const RunResult& result);

/// The same for what `show` saw of the selection.
Judgement judge(const Snapshot& snapshot, const Selection& selection);

/// The same for the comparison of two roots.
Judgement judge(const SnapshotDiff& diff);

}  // namespace host
