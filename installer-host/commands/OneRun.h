#pragma once

#include "installer-host/Plan.h"
#include "installer-host/RunResult.h"

namespace host {

/// Runs the steps as planned, looks at the disk before and after, and returns all that became known. `everything`, when
/// not null, receives what compare() lists at most, however much of that the report is to hold. Throws Failure and
/// Interrupted when there is nothing to report.
RunResult performRun(const Plan& plan, Changes* everything = nullptr);

}  // namespace host
