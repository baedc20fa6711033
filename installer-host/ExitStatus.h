#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace host {

/// The exit status of the program.
enum class ExitStatus : int {
    Done = 0,
    StepFailed = 1,         ///< a step set the failure bit of resultFlags
    Usage = 2,              ///< the command line was wrong
    BundleUnusable = 3,     ///< the bundle is missing, malformed or cannot be loaded
    InterfaceRefused = 4,   ///< the factory or the interface was refused
    ExceptionLeftStep = 5,  ///< a step let an exception escape, or ended the process
    RootNotMade = 6,        ///< something that a run needs is missing or could not be made
    NotStored = 7,          ///< something could not be stored or read
    NotAsExpected = 8,      ///< the outcome is not the one that the user expects
    TimedOut = 9,           ///< the time-out ended the run
    SomethingChanged = 10,  ///< all went well, and the user asked for this status on a change; two roots differ
    NotThere = 11,          ///< what the user asked for does not exist
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
