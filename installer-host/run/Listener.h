#pragma once

#include <string>

#include "installer-host/RunResult.h"

namespace host {

/// Starts the worker (WorkerProtocol.h), which runs the steps or checks the bundle, and makes the result of what it
/// tells until its end: all of it but the changes on the disk. The worker runs in the private root `workedOn`, or on
/// the machine itself when that is empty; all paths are absolute. What goes wrong once the worker runs is in the
/// result; throws Failure (RootNotMade) when it cannot be started.
RunResult runWorker(const Options& options, const std::string& workedOn);

}  // namespace host
