#pragma once

#include <optional>
#include <string>
#include <vector>

#include "installer-host/RunResult.h"
#include "installer-host/look/RootFolder.h"
#include "installer-host/run/AlertDesk.h"
#include "installer-host/run/ChildOutput.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/FirstProcess.h"
#include "installer-host/run/LeftProcesses.h"
#include "installer-host/run/Limits.h"
#include "installer-host/run/Sandbox.h"

namespace host {

/// What stands between the bundle's code and the machine: the sandbox with its limits, unless the code is to work on
/// the machine itself, and in any case the host's own hands for what the code writes and for its alerts.
class Confinement {
public:
    /// `root` is what the code works on, with its folders made: the machine's or a private one; null for none. It
    /// outlives this object. `program` is the worker's. Throws Failure (RootNotMade, BundleUnusable).
    Confinement(const Options& options, const RootFolder* root, const std::string& program);
    Confinement(const Confinement&) = delete;
    Confinement& operator=(const Confinement&) = delete;

    /// Where the worker sees the bundle.
    const std::string& bundle() const { return bundle_; }

    /// How to run the worker with these arguments and these descriptors, for the call of runChild(). Valid once.
    ChildOrder order(const std::vector<std::string>& arguments, const std::vector<int>& descriptors);

    /// Why the worker could not be started, once it has ended without a word.
    Failure refusal() const;

    /// To be called when the worker has said that it runs: lets it go on.
    void workerStarted();

    /// Adds to the result what became known here: the alerts, the limits, and which processes were left.
    void complete(RunResult& result) const;

private:
    std::vector<std::string> command(const std::vector<std::string>& arguments) const;

    std::chrono::seconds timeout_;
    std::string bundle_, program_;
    ChildOutput output_;
    AlertDesk alerts_;
    Limits limits_;
    FirstProcess first_;
    LeftProcesses left_;
    std::optional<Sandbox> sandbox_;
    Pipe input_;
};

}  // namespace host
