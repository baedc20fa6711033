#include "installer-host/Judgement.h"

#include <algorithm>
#include <optional>

#include "installer-host/report/Text.h"
#include "plugin/ParamBlock.h"

namespace host {

namespace {

constexpr const char* BROKE_PROTOCOL = " sent an event that only the worker may send, and was ended: ";

std::optional<Judgement> judgeFault(const StepResult& step, const RunResult& result) {
    const std::string name = longName(step.step);
    if (step.outcome == StepResult::Outcome::Exception) {
        return Judgement{ExitStatus::ExceptionLeftStep,
                         "an exception of type " + escaped(step.fault) + " left the " + name +
                             (step.faultMessage.empty() ? "" : ": " + escaped(step.faultMessage))};
    }
    if (step.outcome == StepResult::Outcome::Crashed) {
        const std::string what = result.end == WorkerEnd::BrokeProtocol ? BROKE_PROTOCOL : " ended the process: ";
        return Judgement{ExitStatus::ExceptionLeftStep, "the " + name + what + escaped(step.fault)};
    }
    return std::nullopt;
}

/// What the time-out interrupted.
std::string whatTimedOut(const RunResult& result) {
    for (const StepResult& step : result.steps) {
        if (step.outcome == StepResult::Outcome::TimedOut) {
            return std::string("was in the ") + longName(step.step);
        }
    }
    return "was in no step; it was loading, or releasing the interface";
}

/// Whether everything that the steps stored is on the disk, and everything could be read. A preference file that was
/// damaged before the run and left alone does not count.
bool isComplete(const RunResult& result) {
    const auto& unreadable = result.changes.unreadable;
    return result.notStored.empty() && std::all_of(unreadable.begin(), unreadable.end(), [](const Unreadable& one) {
               return one.kind == Unreadable::Kind::Older;
           });
}

Judgement judgeTimeout(const RunResult& result) {
    return {ExitStatus::TimedOut, "the run was ended after " + std::to_string(result.options.timeout) +
                                      " s: the bundle's code " + whatTimedOut(result) +
                                      ".\nGive it more time with --timeout SECONDS."};
}

Judgement judgeInterruption(const RunResult& result) {
    return {static_cast<ExitStatus>(SIGNALLED + result.signal), "the user ended the run"};
}

Judgement judgeRun(const RunResult& result) {
    for (const StepResult& step : result.steps) {
        if (const std::optional<Judgement> fault = judgeFault(step, result)) {
            return *fault;
        }
    }
    if (result.end == WorkerEnd::TimedOut) {
        return judgeTimeout(result);
    }
    if (result.failure) {
        return {result.failure->status(), escaped(result.failure->what())};
    }
    if (result.end == WorkerEnd::Died) {
        return {ExitStatus::BundleUnusable, "the bundle's code ended the process outside a step: " + result.endText};
    }
    if (result.end == WorkerEnd::BrokeProtocol) {
        return {ExitStatus::BundleUnusable,
                std::string("the bundle's code, outside a step,") + BROKE_PROTOCOL + escaped(result.endText)};
    }
    for (const StepResult& step : result.steps) {
        if ((step.flagsAfter.value_or(0) & XCOD_RESULT_FAILED) != 0) {
            return {ExitStatus::StepFailed,
                    std::string("the ") + longName(step.step) + " set the failure bit of resultFlags"};
        }
    }
    if (!isComplete(result)) {
        return {ExitStatus::NotStored, "not everything could be stored or read; the report says what and why"};
    }
    return {result.options.changesExit && result.changes.any() ? ExitStatus::SomethingChanged : ExitStatus::Done, ""};
}

Judgement judgeCheck(const RunResult& result) {
    if (result.end == WorkerEnd::TimedOut) {
        return judgeTimeout(result);
    }
    for (const Finding& finding : result.findings) {
        if (!finding.ok) {
            return {finding.status,
                    "this bundle is not a usable installer plug-in: " + finding.subject + ": " + escaped(finding.text)};
        }
    }
    return {};
}

}  // namespace

Judgement judge(const RunResult& result) {
    if (result.end == WorkerEnd::Interrupted) {
        return judgeInterruption(result);
    }
    return result.options.command == Command::Check ? judgeCheck(result) : judgeRun(result);
}

Judgement judge(const Snapshot& snapshot, const Selection& selection) {
    if (!snapshot.isComplete()) {
        return {ExitStatus::NotStored, "not everything could be read; the report says what and why"};
    }
    if (!selection.domain.empty() && snapshot.domains.empty()) {
        return {ExitStatus::NotThere, "there is no domain '" + escaped(selection.domain) + "'"};
    }
    if (!selection.key.empty() && snapshot.domains.begin()->second.keys.empty()) {
        return {ExitStatus::NotThere,
                "there is no key '" + escaped(selection.key) + "' in '" + escaped(selection.domain) + "'"};
    }
    return {};
}

Judgement judge(const SnapshotDiff& diff) {
    if (!diff.unreadable.empty()) {
        return {ExitStatus::NotStored, "not everything could be compared; the report says what and why"};
    }
    return {diff.any() ? ExitStatus::SomethingChanged : ExitStatus::Done, ""};
}

}  // namespace host
