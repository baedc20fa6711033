#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>

#include "installer-host/Options.h"
#include "installer-host/report/TextReport.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/DryRunCopy.h"
#include "installer-host/run/Listener.h"
#include "plugin/ParamBlock.h"

namespace {

using namespace host;
namespace fs = std::filesystem;

void say(const std::string& message) {
    std::fprintf(stderr, "installer-host: %s\n", message.c_str());
}

/// Writes a report, or the help, to standard output, to the last byte.
void print(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        throw Failure(ExitStatus::NotStored, "standard output could not be written to");
    }
}

/// The bundle's absolute path without symbolic links.
std::string findBundle(const std::string& path) {
    std::error_code error;
    const fs::path found = fs::canonical(path, error);
    if (error) {
        throw Failure(ExitStatus::BundleUnusable,
                      "there is no bundle at '" + path + "': " + error.message() +
                          "\n'make' builds the plug-in as build/release/CorvaneInstall.bundle.");
    }
    if (!fs::is_regular_file(found / "Contents/Info.plist", error)) {
        throw Failure(ExitStatus::BundleUnusable,
                      "'" + path + "' is no bundle: there is no file Contents/Info.plist in it");
    }
    return found;
}

std::string findRoot(const std::string& path) {
    if (path.empty()) {
        return path;
    }
    const RootFolder exists(path);
    return fs::canonical(path);
}

/// Whether all that the steps stored is on the disk, as far as can be seen: the post-install step sets Finder flags.
bool isAllStored(const RunResult& run) {
    const auto setsFlags = [](const StepResult& step) {
        return step.step == Step::PostInstall && step.outcome == StepResult::Outcome::Done;
    };
    const bool setFlags = std::any_of(run.steps.begin(), run.steps.end(), setsFlags);
    const auto isMissing = [&](const Unreadable& unreadable) {
        return unreadable.kind == Unreadable::Kind::Stored || (unreadable.kind == Unreadable::Kind::Finder && setFlags);
    };
    const auto& unreadable = run.changes.unreadable;
    return run.notStored.empty() && std::none_of(unreadable.begin(), unreadable.end(), isMissing);
}

/// The exit status of a run, and the message that goes with it.
ExitStatus judge(const RunResult& run, const WorkerResult& worker) {
    std::string during = "was in none of the steps, but loading or giving the interface up";
    for (const StepResult& step : run.steps) {
        const std::string name = longName(step.step);
        if (step.outcome == StepResult::Outcome::Exception) {
            say("an exception of type " + step.fault + " left the " + name +
                (step.faultMessage.empty() ? "" : ": " + step.faultMessage));
            return ExitStatus::ExceptionLeftStep;
        }
        if (step.outcome == StepResult::Outcome::Crashed) {
            say("the " + name + " ended the process: " + step.fault);
            return ExitStatus::ExceptionLeftStep;
        }
        during = step.outcome == StepResult::Outcome::TimedOut ? "was in the " + name : during;
    }
    if (worker.timedOut) {
        say("the run was ended after " + std::to_string(run.options.timeout) + " s: the bundle's code " + during +
            ".\nGive it more time with --timeout SECONDS.");
        return ExitStatus::TimedOut;
    }
    if (!worker.finished) {
        say("the bundle's code ended the process outside of a step: " + worker.end);
        return ExitStatus::BundleUnusable;
    }
    for (const StepResult& step : run.steps) {
        if ((step.flagsAfter.value_or(0) & XCOD_RESULT_FAILED) != 0) {
            say(std::string("the ") + longName(step.step) + " set the failure bit of resultFlags");
            return ExitStatus::StepFailed;
        }
    }
    if (!isAllStored(run)) {
        say("not everything could be stored; the report says what and why");
        return ExitStatus::NotStored;
    }
    return ExitStatus::Done;
}

ExitStatus runCommand(Options options) {
    RunResult run;
    options.bundle = findBundle(options.bundle);
    run.bundle = options.bundle;
    run.root = findRoot(options.root);
    run.options = options;
    std::optional<DryRunCopy> copy;
    if (options.dryRun) {
        copy.emplace(run.root.empty() ? "/" : run.root);
    }
    const std::string workedOn = copy ? copy->path() : run.root;
    const RootFolder root(workedOn);

    const Snapshot before = takeSnapshot(root);
    const WorkerResult worker = runWorker(options, workedOn);
    run.changes = compare(before, takeSnapshot(root), options.verbose);
    run.steps = worker.steps;
    run.notStored = worker.notStored;
    run.status = judge(run, worker);
    print(runReport(run));
    return run.status;
}

ExitStatus checkCommand(Options options) {
    options.bundle = findBundle(options.bundle);
    WorkerResult worker = runWorker(options, "");
    if (worker.timedOut) {
        worker.findings.push_back({"code", false, "does not end in time", ExitStatus::TimedOut});
    } else if (!worker.finished) {
        worker.findings.push_back({"code", false, "ended the process: " + worker.end, ExitStatus::BundleUnusable});
    }
    print(checkReport(options.bundle, worker.findings, options.format));
    for (const Finding& finding : worker.findings) {
        if (!finding.ok) {
            say("this bundle is no usable installer plug-in; the report's lines with 'failed' say why");
            return finding.status;
        }
    }
    return ExitStatus::Done;
}

ExitStatus showCommand(Options options) {
    options.root = findRoot(options.root);
    print(showReport(takeSnapshot(RootFolder(options.root)), options));
    return ExitStatus::Done;
}

ExitStatus perform(const Options& options) {
    switch (options.command) {
        case Command::Run:
            return runCommand(options);
        case Command::Check:
            return checkCommand(options);
        case Command::Show:
            break;
    }
    return showCommand(options);
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    ExitStatus status = ExitStatus::Done;
    try {
        const ParsedOptions parsed = parseOptions(argc, argv);
        if (parsed.proceed) {
            status = perform(parsed.options);
        } else if (parsed.status == ExitStatus::Done) {
            print(parsed.text);
        } else {
            std::fputs(parsed.text.c_str(), stderr);
            status = parsed.status;
        }
    } catch (const Failure& failure) {
        say(failure.what());
        status = failure.status();
    } catch (const Interrupted& interrupted) {
        endBySignal(interrupted.signal);
    } catch (const std::exception& fault) {
        say(std::string("the run cannot go on: ") + fault.what());
        status = ExitStatus::RootNotMade;
    }
    return static_cast<int>(status);
}
