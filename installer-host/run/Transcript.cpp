#include "installer-host/run/Transcript.h"

#include <cstring>

#include "installer-host/EventLog.h"

namespace host {

namespace {

using Outcome = StepResult::Outcome;

/// How a process ended that should have ended by itself, from its exit status.
std::string endText(int exitStatus) {
    if (exitStatus > SIGNALLED) {
        const int signal = exitStatus - SIGNALLED;
        return "signal " + std::to_string(signal) + " (" + strsignal(signal) + ")";
    }
    return "exit status " + std::to_string(exitStatus);
}

/// What a step that was running comes to when its process ends.
Outcome outcomeOf(WorkerEnd end) {
    switch (end) {
        case WorkerEnd::TimedOut:
            return Outcome::TimedOut;
        case WorkerEnd::Interrupted:
            return Outcome::Interrupted;
        case WorkerEnd::Finished:
        case WorkerEnd::Died:
        case WorkerEnd::BrokeProtocol:
            break;
    }
    return Outcome::Crashed;
}

}  // namespace

Transcript::Transcript(const Options& options) {
    result_.options = options;
    for (const Step step : options.installation.steps) {
        result_.steps.emplace_back().step = step;
    }
    goOnWith(result_.steps.empty() ? "checking the bundle" : "starting the bundle's code");
}

bool Transcript::hear(std::string_view line) {
    const std::optional<Event> event = ++heard_ <= MOST_EVENTS && !isBroken_ ? decode(line) : std::nullopt;
    return (event && std::visit([this](const auto& one) { return isNext(one); }, *event)) || refuse(line);
}

void Transcript::hearEndlessLine() {
    if (!isBroken_) {
        refuse("a line of more than " + std::to_string(LONGEST_EVENT) + " bytes");
    }
}

bool Transcript::refuse(std::string_view line) {
    constexpr std::size_t LONGEST_QUOTE = 100;
    if (!isBroken_) {
        isBroken_ = true;
        result_.endText = heard_ > MOST_EVENTS ? "more than " + std::to_string(MOST_EVENTS) + " events"
                                               : std::string(line.substr(0, LONGEST_QUOTE));
    }
    return false;
}

bool Transcript::isNext(const Started&) {
    if (state_ != State::Silent) {
        return false;
    }
    state_ = State::Between;
    return true;
}

bool Transcript::isNext(const StepBegins& event) {
    const bool mayBegin = state_ == State::Between && begun_ < result_.steps.size() &&
                          (begun_ == 0 || result_.steps[begun_ - 1].outcome == Outcome::Done);
    if (!mayBegin || result_.steps[begun_].step != event.step) {
        return false;
    }
    state_ = State::InStep;
    stepBegan_ = std::chrono::steady_clock::now();
    result_.steps[begun_++].flagsBefore = event.flags;
    goOnWith(std::string("running the ") + longName(event.step));
    return true;
}

bool Transcript::isNext(const StepEnds& event) {
    if (state_ != State::InStep || result_.steps[begun_ - 1].step != event.step) {
        return false;
    }
    StepResult& step = result_.steps[begun_ - 1];
    state_ = State::Between;
    isListOld_ = true;
    step.duration =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - stepBegan_);
    step.flagsAfter = event.flags;
    step.fault = event.exceptionType;
    step.faultMessage = event.exceptionMessage;
    step.outcome = step.fault.empty() ? Outcome::Done : Outcome::Exception;
    goOnWith("waiting for the bundle's code", step.fault.empty() ? "done" : "exception " + step.fault);
    return true;
}

bool Transcript::isNext(const Finding& event) {
    result_.findings.push_back(event);
    return state_ == State::Between && result_.steps.empty();
}

bool Transcript::ranAll() const {
    return begun_ > 0 && (begun_ == result_.steps.size() || result_.steps[begun_ - 1].outcome == Outcome::Exception);
}

/// A step may have stored after all what an earlier one could not.
void Transcript::dropOldList() {
    if (isListOld_) {
        result_.notStored.clear();
        isListOld_ = false;
    }
}

bool Transcript::isNext(const NotStored& event) {
    dropOldList();
    result_.notStored.push_back(event.fault);
    return state_ == State::Between && begun_ > 0 && result_.notStored.size() <= MOST_FAULTS;
}

bool Transcript::isNext(const Refused& event) {
    if (state_ != State::Between || begun_ > 0 || !result_.findings.empty()) {
        return false;
    }
    state_ = State::Over;
    result_.failure.emplace(event.status, event.text);
    return true;
}

bool Transcript::isNext(const Finished&) {
    const bool isAllTold = result_.steps.empty() ? !result_.findings.empty() : ranAll();
    if (state_ != State::Between || !isAllTold) {
        return false;
    }
    dropOldList();
    state_ = State::Over;
    return true;
}

/// Ends what went on until now.
void Transcript::goOnWith(const std::string& activity, const std::string& resultOfLast) {
    if (activity_) {
        activity_->setResult(resultOfLast);
    }
    activity_.reset();
    if (!activity.empty()) {
        activity_.emplace(activity);
    }
}

RunResult Transcript::finish(const ChildEnd& end) {
    if (isBroken_) {
        result_.failure.reset();
        endEarly(WorkerEnd::BrokeProtocol, result_.endText);
    } else if (end.how == ChildEnd::How::TimedOut) {
        endEarly(WorkerEnd::TimedOut, "");
    } else if (end.how == ChildEnd::How::Interrupted) {
        result_.signal = end.signal;
        endEarly(WorkerEnd::Interrupted, "");
    } else if (state_ != State::Over || end.exitStatus != 0) {
        endEarly(WorkerEnd::Died, endText(end.exitStatus));
    }
    goOnWith("", result_.endText);
    for (const cv::Fault& fault : result_.notStored) {
        logEvent("not-stored", fault.what + ": " + fault.reason);
    }
    return result_;
}

/// Notes an end that is not as it should be.
void Transcript::endEarly(WorkerEnd end, const std::string& text) {
    result_.end = end;
    result_.endText = text;
    for (StepResult& step : result_.steps) {
        step.outcome = step.outcome == Outcome::Done ? Outcome::Returned : step.outcome;
    }
    if (state_ == State::InStep) {
        StepResult& running = result_.steps[begun_ - 1];
        running.outcome = outcomeOf(end);
        running.fault = text;
        running.duration =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - stepBegan_);
    }
    if (result_.options.command == Command::Check) {
        endFindings();
    }
}

/// Makes the end a finding of the check.
void Transcript::endFindings() {
    switch (result_.end) {
        case WorkerEnd::Finished:
        case WorkerEnd::Interrupted:
            break;
        case WorkerEnd::TimedOut:
            result_.findings.push_back({"code", false, "did not end before the time-out", ExitStatus::TimedOut});
            break;
        case WorkerEnd::Died:
            result_.findings.push_back(
                {"code", false, "ended the process: " + result_.endText, ExitStatus::BundleUnusable});
            break;
        case WorkerEnd::BrokeProtocol:
            result_.findings.push_back(
                {"code", false, "wrote into the worker's report: " + result_.endText, ExitStatus::BundleUnusable});
            break;
    }
}

}  // namespace host
