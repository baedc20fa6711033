#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "installer-host/Finding.h"
#include "installer-host/look/Changes.h"
#include "installer-host/options/Options.h"
#include "platform/Result.h"

namespace host {

/// What became of one step.
struct StepResult {
    enum class Outcome {
        NotRun,      ///< an earlier fault ended the run
        Done,        ///< it returned, and its process ended as it should
        Returned,    ///< it returned, says the bundle's process, which did not end as it should afterwards
        Exception,   ///< an exception left it
        Crashed,     ///< it ended the process, or broke the protocol between worker and host
        TimedOut,    ///< it was still running when the time-out came
        Interrupted  ///< it was still running when the user ended the run
    };

    Step step;
    Outcome outcome = Outcome::NotRun;
    std::optional<std::uint32_t> flagsBefore;  ///< resultFlags; unset for a step that did not run
    std::optional<std::uint32_t> flagsAfter;   ///< unset for a step whose process ended, too
    std::string fault;                         ///< the exception's type, or how the process ended
    std::string faultMessage;                  ///< what the exception says; may be empty
    std::chrono::milliseconds duration{0};     ///< how long it ran
};

/// An alert that came up during a run.
struct AlertRecord {
    std::string title;
    std::string text;
    std::vector<std::string> buttons;   ///< the first is the default
    std::optional<std::string> answer;  ///< the chosen button; unset when the alert still waited at the end of the run
    std::string answeredBy;             ///< "user", "console" or "nobody"
};

/// How the worker ended.
enum class WorkerEnd {
    Finished,       ///< it did all that it was to do
    TimedOut,       ///< it was killed when its time was over
    Died,           ///< the bundle's code ended the process
    BrokeProtocol,  ///< it was killed for an event that no worker sends: the bundle's code sent it
    Interrupted     ///< it was killed when the user ended the run
};

/// All that became known in a run or a check: the judgement and the reports depend on this alone.
struct RunResult {
    Options options;  ///< what was asked for, the paths absolute
    std::chrono::system_clock::time_point started;
    std::uint32_t userId = 0;      ///< who ran it
    std::string userName;          ///< empty when the user has none
    std::string bundleIdentifier;  ///< empty when it is not known, like the version
    std::string bundleVersion;
    WorkerEnd end = WorkerEnd::Finished;
    std::string endText;                     ///< Died: how, for example "signal 11 (...)"; BrokeProtocol: by what
    int signal = 0;                          ///< Interrupted: the signal by which the user ended the run
    std::optional<Failure> failure;          ///< of a run: why no step was run; the bundle's code may have been loaded
    std::vector<StepResult> steps;           ///< of a run: each that was asked for
    std::vector<cv::Fault> notStored;        ///< of a run: what the bundle's code asked for in vain
    std::vector<AlertRecord> alerts;         ///< in the order in which they came up
    std::vector<std::string> limits;         ///< which limits held for the bundle's code, a sentence each
    std::vector<std::string> leftProcesses;  ///< of a run: the names of those that the steps had left running
    Changes changes;                         ///< of a run
    std::vector<Finding> findings;           ///< of a check
};

}  // namespace host
