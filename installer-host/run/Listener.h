#pragma once

#include <string>
#include <vector>

#include "installer-host/Result.h"

namespace host {

/// What the worker told until its end.
struct WorkerResult {
    std::vector<StepResult> steps;
    std::vector<StoreFailure> notStored;
    std::vector<Finding> findings;
    bool timedOut = false;
    bool finished = false;
    std::string end;  ///< how a worker ended that neither finished nor timed out, for example "signal 11 (...)"
};

/// Starts the worker, which runs the bundle's code (WorkerProtocol.h), in the private root `root` (an absolute path;
/// empty: on the machine itself) and listens to it. `options.bundle` is absolute. Throws Failure when the worker tells
/// one or cannot be started, and Interrupted.
WorkerResult runWorker(const Options& options, const std::string& root);

}  // namespace host
