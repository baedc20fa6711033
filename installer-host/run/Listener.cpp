#include "installer-host/run/Listener.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>

#include "installer-host/Message.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/Sandbox.h"
#include "installer-host/run/WorkerProtocol.h"
#include "platform/Descriptor.h"

namespace host {

namespace {

using nlohmann::json;

/// How a process ended that should have ended by itself, from its exit status.
std::string endText(int exitStatus) {
    constexpr int SIGNALLED = 128;
    if (exitStatus > SIGNALLED) {
        const int signal = exitStatus - SIGNALLED;
        return "signal " + std::to_string(signal) + " (" + strsignal(signal) + ")";
    }
    return "exit status " + std::to_string(exitStatus);
}

/// Fills the result with what the worker tells.
class Listener {
public:
    explicit Listener(const Options& options) {
        result_.options = options;
        for (const Step step : options.installation.steps) {
            result_.steps.emplace_back().step = step;
        }
    }

    void hear(const json& event) {
        const std::string name = event["event"];
        if (name == EVENT_STARTED) {
            isStarted_ = true;
        } else if (name == EVENT_STEP_BEGINS) {
            beginStep(event);
        } else if (name == EVENT_STEP_ENDS) {
            endStep(event);
        } else if (name == EVENT_FINDING) {
            result_.findings.push_back({event["subject"], event["ok"], event["text"], event["status"]});
        } else if (name == EVENT_NOT_STORED) {
            result_.notStored.push_back({event["what"], event["reason"]});
        } else if (name == EVENT_FAILURE) {
            failure_.emplace(event["status"].get<ExitStatus>(), event["text"].get<std::string>());
        } else if (name == EVENT_FINISHED) {
            isFinished_ = true;
        }
    }

    /// The whole result, once the worker is gone. Throws the Failure that it told, or one with `refusal` when it never
    /// ran.
    RunResult end(const ChildEnd& end, const std::string& refusal) {
        if (failure_) {
            throw *failure_;
        }
        if (!end.timedOut && !isStarted_) {
            throw Failure(ExitStatus::RootNotMade, refusal);
        }
        if (end.timedOut) {
            endEarly(WorkerEnd::TimedOut, "");
        } else if (!isFinished_) {
            endEarly(WorkerEnd::Died, endText(end.exitStatus));
        }
        return result_;
    }

private:
    StepResult& stepOf(const json& event) {
        const Step step = event["step"];
        return result_.steps.front().step == step ? result_.steps.front() : result_.steps.back();
    }

    void beginStep(const json& event) {
        running_ = &stepOf(event);
        running_->flagsBefore = event["flags"];
        if (result_.options.verbose) {
            say(std::string("running the ") + longName(running_->step));
        }
    }

    void endStep(const json& event) {
        StepResult& step = stepOf(event);
        running_ = nullptr;
        step.flagsAfter = event["flags"];
        step.fault = event["type"];
        step.faultMessage = event["message"];
        step.outcome = step.fault.empty() ? StepResult::Outcome::Done : StepResult::Outcome::Exception;
    }

    /// Notes an end before the time; it is also that of the step that was running, and a finding of a check.
    void endEarly(WorkerEnd end, const std::string& text) {
        const bool isTimeout = end == WorkerEnd::TimedOut;
        result_.end = end;
        result_.endText = text;
        if (running_ != nullptr) {
            running_->outcome = isTimeout ? StepResult::Outcome::TimedOut : StepResult::Outcome::Crashed;
            running_->fault = text;
        }
        if (result_.options.command == Command::Check) {
            result_.findings.push_back({"code", false,
                                        isTimeout ? "does not end in time" : "ended the process: " + text,
                                        isTimeout ? ExitStatus::TimedOut : ExitStatus::BundleUnusable});
        }
    }

    RunResult result_;
    StepResult* running_ = nullptr;
    bool isStarted_ = false;
    bool isFinished_ = false;
    std::optional<Failure> failure_;
};

/// The worker's program, which lies at a fixed place as seen from this one, built and installed alike.
std::string workerProgram() {
    namespace fs = std::filesystem;
    const fs::path ownFolder = fs::read_symlink("/proc/self/exe").parent_path();
    const std::string program = ownFolder.parent_path() / INSTALLER_HOST_LIBEXEC_FOLDER / "installer-host-worker";
    if (access(program.c_str(), X_OK) != 0) {
        throw Failure(ExitStatus::RootNotMade, "the program that runs the bundle's code cannot be started: '" +
                                                   program + "': " + cv::errorText(errno) +
                                                   "\nIt belongs to installer-host; build or install that again.");
    }
    return program;
}

std::vector<std::string> workerCommand(const WorkerOrder& order) {
    std::vector<std::string> command = toArguments(order);
    command.insert(command.begin(), workerProgram());
    return command;
}

}  // namespace

RunResult runWorker(const Options& options, const std::string& workedOn) {
    EventPipe events;
    WorkerOrder order{events.childEnd(), options.bundle, options.installation};
    std::vector<std::string> command;
    std::optional<Sandbox> sandbox;
    if (workedOn.empty()) {
        command = workerCommand(order);
    } else {
        sandbox.emplace(workedOn);
        order.bundle = sandbox->show(options.bundle);
        command = sandbox->wrap(workerCommand(order));
    }
    Listener listener(options);
    const ChildEnd end = runChild(command, events, std::chrono::seconds(options.timeout),
                                  [&](const json& event) { listener.hear(event); });
    return listener.end(
        end, sandbox ? sandboxRefusedText() : "the worker, which runs the bundle's code, could not be started");
}

}  // namespace host
