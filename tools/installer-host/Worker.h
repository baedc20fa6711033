#pragma once

#include <string>
#include <vector>

#include "tools/installer-host/RunResult.h"

namespace host {

// The bundle's code runs in a process of its own, the worker: inside the private root if there is one, and where it can
// hang, crash or throw without taking the report with it. The worker is this program, called with --event-fd, and tells
// its parent what happens in events, JSON objects with the key "event":
//
//     started                                     the worker runs
//     stepBegins   step flags                     before a step is called
//     stepEnds     step flags type message        afterwards; a type when an exception left it
//     finding      subject ok text status         a finding of `check`
//     notStored    what reason                    something that the steps stored is not on the disk
//     failure      status text                    the end, by a Failure
//     finished                                    the end

/// The worker's part: does what `options` ask for and tells its parent.
void work(const Options& options);

/// What the worker told until its end.
struct WorkerResult {
    std::vector<StepResult> steps;
    std::vector<StoreFailure> notStored;
    std::vector<Finding> findings;
    bool timedOut = false;
    bool finished = false;
    std::string end;  ///< how a worker ended that neither finished nor timed out, for example "signal 11 (...)"
};

/// The parent's part: starts the worker in the private root `root` (an absolute path; empty: on the machine itself) and
/// listens to it. `options.bundle` is absolute. Throws Failure when the worker tells one or cannot be started, and
/// Interrupted.
WorkerResult runWorker(const Options& options, const std::string& root);

}  // namespace host
