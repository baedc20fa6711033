#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "installer-host/Options.h"
#include "installer-host/look/Changes.h"

namespace host {

/// What became of one step.
struct StepResult {
    enum class Outcome {
        NotRun,     ///< an earlier fault ended the run
        Done,       ///< it returned
        Exception,  ///< an exception left it
        Crashed,    ///< it ended the process
        TimedOut    ///< it was still running when the time-out came
    };

    Step step;
    Outcome outcome = Outcome::NotRun;
    std::optional<std::uint32_t> flagsBefore;  ///< resultFlags; unset for a step that did not run
    std::optional<std::uint32_t> flagsAfter;   ///< unset for a step whose process ended, too
    std::string fault;                         ///< the exception's type, or how the process ended
    std::string faultMessage;                  ///< what the exception says; may be empty
};

/// Something that the bundle's code asked the system to store and that was not stored.
struct StoreFailure {
    std::string what;    ///< usually a path
    std::string reason;  ///< to end a sentence with
};

/// One finding of `check`.
struct Finding {
    std::string subject;  ///< registration, exports, ...
    bool ok = false;
    std::string text;                      ///< what was found
    ExitStatus status = ExitStatus::Done;  ///< what the check comes to when it is not ok
};

/// All that a run's report tells.
struct RunResult {
    std::string bundle;  ///< absolute
    std::string root;    ///< absolute; empty for the machine itself
    Options options;
    std::vector<StepResult> steps;
    std::vector<StoreFailure> notStored;
    Changes changes;
    ExitStatus status = ExitStatus::Done;
};

}  // namespace host
