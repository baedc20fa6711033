#pragma once

#include "installer-host/ExitStatus.h"
#include "installer-host/options/Options.h"

namespace host {

// Each performs a command and prints its report. An error that leaves no report throws: Failure, Interrupted,
// OutputLost.

ExitStatus runCommand(const Options& given);
ExitStatus matrixCommand(const Options& given);
ExitStatus undoCommand(const Options& given);
ExitStatus checkCommand(const Options& given);
ExitStatus showCommand(const Options& given);

}  // namespace host
