#include "tools/installer-host/Worker.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <exception>
#include <filesystem>
#include <new>
#include <optional>
#include <system_error>

#include "platform/StoreFailures.h"
#include "tools/installer-host/BundleSession.h"
#include "tools/installer-host/Checks.h"
#include "tools/installer-host/ChildProcess.h"
#include "tools/installer-host/Sandbox.h"

namespace host {

namespace {

using nlohmann::json;

XCodSelector selectorOf(Step step) {
    return step == Step::PreInstall ? XCOD_SELECTOR_PRE_INSTALL : XCOD_SELECTOR_POST_INSTALL;
}

/// A host's parameter block is longer than what plug-ins know of it.
constexpr std::size_t HOST_BLOCK_SIZE = 4096;

/// Calls one step with a fresh block; false when an exception left it.
bool runStep(const Options& options, Step step, StepFunction entry) {
    alignas(std::max_align_t) std::array<unsigned char, HOST_BLOCK_SIZE> storage{};
    auto* block = new (storage.data()) XCodParamBlock();
    block->version = options.blockVersion;
    block->selector = selectorOf(step);
    block->productCode = options.product;
    block->languageCode = options.language;
    writeEvent(options.eventFd,
               {{"event", "stepBegins"}, {"step", step}, {"flags", std::uint32_t{block->resultFlags}}});
    const CallResult result = callStep(entry, block);
    writeEvent(options.eventFd, {{"event", "stepEnds"},
                                 {"step", step},
                                 {"flags", std::uint32_t{block->resultFlags}},
                                 {"type", result.exceptionType},
                                 {"message", result.exceptionMessage}});
    return !result.threw;
}

void runSteps(const Options& options) {
    const BundleSession session(options.bundle);
    const StepEntries entries(session, options.direct);
    for (const Step step : options.steps) {
        if (!runStep(options, step, entries.entry(step))) {
            break;
        }
    }
    for (const cv::StoreFailure& failure : cv::storeFailures()) {
        writeEvent(options.eventFd, {{"event", "notStored"}, {"what", failure.what}, {"reason", failure.reason}});
    }
}

void runChecks(const Options& options) {
    checkBundle(options.bundle, [&](const Finding& finding) {
        writeEvent(options.eventFd, {{"event", "finding"},
                                     {"subject", finding.subject},
                                     {"ok", finding.ok},
                                     {"text", finding.text},
                                     {"status", finding.status}});
    });
}

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

std::vector<std::string> workerCommand(Options options, int eventFd, const std::string& bundleInside) {
    options.eventFd = eventFd;
    options.bundle = bundleInside;
    std::vector<std::string> command = toArguments(options);
    command.insert(command.begin(), std::filesystem::read_symlink("/proc/self/exe").string());
    return command;
}

}  // namespace

void work(const Options& options) {
    fcntl(options.eventFd, F_SETFD, FD_CLOEXEC);
    writeEvent(options.eventFd, {{"event", "started"}});
    json end{{"event", "finished"}};
    try {
        if (options.command == Command::Run) {
            runSteps(options);
        } else {
            runChecks(options);
        }
    } catch (const Failure& failure) {
        end = {{"event", "failure"}, {"status", failure.status()}, {"text", failure.what()}};
    } catch (const std::exception& fault) {
        end = {{"event", "failure"}, {"status", ExitStatus::BundleUnusable}, {"text", fault.what()}};
    }
    writeEvent(options.eventFd, end);
}

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
        throw Failure(ExitStatus::RootNotMade,
                      root.empty() ? "the program could not be started a second time" : sandboxRefusedText());
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
