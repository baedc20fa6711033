#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "installer-host/Activity.h"
#include "installer-host/RunResult.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/WorkerProtocol.h"

namespace host {

/// Makes a result of the worker's events, as far as they can be true: each event must be well formed and possible at
/// this point, and their number is limited. The bundle's code can still send plausible false events, for example that
/// its step is done, because it shares a process with the worker's own code.
class Transcript {
public:
    explicit Transcript(const Options& options);

    /// Takes a line without its line feed. False when no worker would send it now, so that it comes from the bundle's
    /// code. The caller must end the worker then; later lines have no effect.
    bool hear(std::string_view line);

    /// Notes that a line is too long.
    void hearEndlessLine();

    /// Whether the worker ran at all.
    bool hasStarted() const { return state_ != State::Silent; }

    /// The result when the worker has ended; without changes.
    RunResult finish(const ChildEnd& end);

private:
    enum class State { Silent, Between, InStep, Over };

    bool isNext(const Started& event);
    bool isNext(const StepBegins& event);
    bool isNext(const StepEnds& event);
    bool isNext(const Finding& event);
    bool isNext(const NotStored& event);
    bool isNext(const Refused& event);
    bool isNext(const Finished& event);

    bool refuse(std::string_view line);
    bool ranAll() const;
    void dropOldList();
    void endEarly(WorkerEnd end, const std::string& text);
    void endFindings();
    void goOnWith(const std::string& activity, const std::string& resultOfLast = "");

    RunResult result_;
    State state_ = State::Silent;
    std::size_t begun_ = 0;  ///< of the steps
    std::size_t heard_ = 0;
    std::chrono::steady_clock::time_point stepBegan_;
    bool isListOld_ = false;  ///< what was not stored will be told anew
    bool isBroken_ = false;
    std::optional<Activity> activity_;  ///< what goes on, for the user
};

}  // namespace host
