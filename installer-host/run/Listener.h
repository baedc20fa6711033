#pragma once

#include "installer-host/RunResult.h"
#include "installer-host/look/RootFolder.h"

namespace host {

/// Starts the worker (WorkerProtocol.h), which runs the steps or checks the bundle, and makes the result from
/// its events: all of the result except the changes on the disk. `root` is what the code works on
/// (Confinement.h); the bundle's path is absolute and without symbolic links. What goes wrong once the worker runs is
/// in the result; throws Failure (RootNotMade) when it cannot be started.
RunResult runWorker(const Options& options, const RootFolder* root);

}  // namespace host
