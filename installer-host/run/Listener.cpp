#include "installer-host/run/Listener.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>

#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/Sandbox.h"
#include "installer-host/run/WorkerProtocol.h"

namespace host {

namespace {

using nlohmann::json;

/// Makes a WorkerResult of the events as they come.
class Listener {
public:
    explicit Listener(const Options& options) : verbose_(options.verbose) {
        if (options.command == Command::Run) {
            for (const Step step : options.steps) {
                result.steps.emplace_back().step = step;
            }
        }
    }

    void hear(const json& event) {
        const std::string name = event["event"];
        if (name == "started") {
            started = true;
        } else if (name == "stepBegins") {
            running_ = &stepOf(event);
            running_->flagsBefore = event["flags"];
            note(std::string("running the ") + longName(running_->step));
        } else if (name == "stepEnds") {
            endStep(event);
        } else if (name == "finding") {
            result.findings.push_back({event["subject"], event["ok"], event["text"], event["status"]});
        } else if (name == "notStored") {
            result.notStored.push_back({event["what"], event["reason"]});
        } else if (name == "failure") {
            failure.emplace(event["status"].get<ExitStatus>(), event["text"].get<std::string>());
        } else if (name == "finished") {
            result.finished = true;
        }
    }

    /// The step that was running when the worker ended before its time.
    void endEarly(StepResult::Outcome outcome, const std::string& fault) {
        if (running_ != nullptr) {
            running_->outcome = outcome;
            running_->fault = fault;
        }
    }

    WorkerResult result;
    bool started = false;
    std::optional<Failure> failure;

private:
    StepResult& stepOf(const json& event) {
        const Step step = event["step"];
        return result.steps.front().step == step ? result.steps.front() : result.steps.back();
    }

    void endStep(const json& event) {
        StepResult& step = stepOf(event);
        running_ = nullptr;
        step.flagsAfter = event["flags"];
        step.fault = event["type"];
        step.faultMessage = event["message"];
        step.outcome = step.fault.empty() ? StepResult::Outcome::Done : StepResult::Outcome::Exception;
    }

    void note(const std::string& text) const {
        if (verbose_) {
            std::fprintf(stderr, "installer-host: %s\n", text.c_str());
        }
    }

    bool verbose_;
    StepResult* running_ = nullptr;
};

/// How a process ended that should have ended by itself, from its exit status.
std::string endText(int exitStatus) {
    constexpr int SIGNALLED = 128;
    if (exitStatus > SIGNALLED) {
        const int signal = exitStatus - SIGNALLED;
        return "signal " + std::to_string(signal) + " (" + strsignal(signal) + ")";
    }
    return "exit status " + std::to_string(exitStatus);
}

/// The worker's program, which lies at a fixed place as seen from this one, built and installed alike.
std::string workerProgram() {
    namespace fs = std::filesystem;
    const fs::path ownFolder = fs::read_symlink("/proc/self/exe").parent_path();
    const std::string program = ownFolder.parent_path() / INSTALLER_HOST_LIBEXEC_FOLDER / "installer-host-worker";
    if (access(program.c_str(), X_OK) != 0) {
        throw Failure(ExitStatus::RootNotMade, "the program that runs the bundle's code cannot be started: '" +
                                                   program + "': " + std::strerror(errno) +
                                                   "\nIt belongs to installer-host; build or install that again.");
    }
    return program;
}

std::vector<std::string> workerCommand(const Options& options, int eventFd, const std::string& bundleInside) {
    WorkerOrder order;
    order.eventFd = eventFd;
    order.bundle = bundleInside;
    if (options.command == Command::Run) {
        order.steps = options.steps;
    }
    order.product = options.product;
    order.language = options.language;
    order.blockVersion = options.blockVersion;
    order.direct = options.direct;
    std::vector<std::string> command = toArguments(order);
    command.insert(command.begin(), workerProgram());
    return command;
}

}  // namespace

WorkerResult runWorker(const Options& options, const std::string& root) {
    EventPipe events;
    Listener listener(options);
    std::vector<std::string> command;
    std::optional<Sandbox> sandbox;
    if (root.empty()) {
        command = workerCommand(options, events.childEnd(), options.bundle);
    } else {
        sandbox.emplace(root);
        const std::string bundleInside = sandbox->show(options.bundle);
        command = sandbox->wrap(workerCommand(options, events.childEnd(), bundleInside));
    }
    const ChildEnd end = runChild(command, events, std::chrono::seconds(options.timeout),
                                  [&](const json& event) { listener.hear(event); });
    if (listener.failure) {
        throw *listener.failure;
    }
    if (!end.timedOut && !listener.started) {
        throw Failure(ExitStatus::RootNotMade, root.empty()
                                                   ? "the worker, which runs the bundle's code, could not be started"
                                                   : sandboxRefusedText());
    }
    WorkerResult& result = listener.result;
    result.timedOut = end.timedOut;
    if (end.timedOut) {
        listener.endEarly(StepResult::Outcome::TimedOut, "");
    } else if (!result.finished) {
        result.end = endText(end.exitStatus);
        listener.endEarly(StepResult::Outcome::Crashed, result.end);
    }
    return result;
}

}  // namespace host
