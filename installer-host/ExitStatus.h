#pragma once

#include <stdexcept>
#include <string>
#include <utility>

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
    SomethingChanged = 10,  ///< all went well, and the user asked to be told that something changed
};

/// With the number of a signal added, the status of a run that its user ended by it.
constexpr int SIGNALLED = 128;

/// An error that ends the run: what happened, and what the user can do about it.
class Failure : public std::runtime_error {
public:
    /// `advice` is empty where there is none to give.
    Failure(ExitStatus status, const std::string& what, std::string advice = "")
        : std::runtime_error(what), status_(status), advice_(std::move(advice)) {}
    ExitStatus status() const { return status_; }
    const std::string& advice() const { return advice_; }

private:
    ExitStatus status_;
    std::string advice_;
};

}  // namespace host
