#pragma once

#include "installer-host/ExitStatus.h"
#include "installer-host/options/Options.h"

namespace host {

// Each performs a command and prints its report. An error that leaves no report throws: Failure, Interrupted,
// OutputLost.

ExitStatus runCommand(const Options& options);
ExitStatus matrixCommand(const Options& options);
ExitStatus undoCommand(const Options& options);
ExitStatus checkCommand(const Options& options);
ExitStatus showCommand(const Options& options);

}  // namespace host
