#pragma once

#include <stdexcept>
#include <string>

namespace host {

/// What the program answers to its caller.
enum class ExitStatus : int {
    Done = 0,
    StepFailed = 1,         ///< a step set the failure bit of resultFlags
    Usage = 2,              ///< the command line was wrong
    BundleUnusable = 3,     ///< the bundle is missing, malformed or cannot be loaded
    InterfaceRefused = 4,   ///< the factory or the interface was refused
    ExceptionLeftStep = 5,  ///< an exception left a step, or a step ended the process
    RootNotMade = 6,        ///< the private root, or what else a run needs, could not be made or is missing
    NotStored = 7,          ///< something could not be stored
    TimedOut = 9,           ///< the time-out ended the run
};

/// An error that ends the run without a report: what happened and what the user can do about it.
class Failure : public std::runtime_error {
public:
    Failure(ExitStatus status, const std::string& message) : std::runtime_error(message), status_(status) {}
    ExitStatus status() const { return status_; }

private:
    ExitStatus status_;
};

}  // namespace host
