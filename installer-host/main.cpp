// The program installer-host. README.md tells one run from here to the exit status.

#include <csignal>
#include <cstdio>
#include <exception>

#include "installer-host/Judgement.h"
#include "installer-host/Message.h"
#include "installer-host/Options.h"
#include "installer-host/Plan.h"
#include "installer-host/look/Snapshot.h"
#include "installer-host/report/JsonReport.h"
#include "installer-host/report/TextReport.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/Listener.h"

namespace {

using namespace host;

/// Writes a report, or the help, to standard output, to the last byte.
void print(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        throw Failure(ExitStatus::NotStored, "standard output could not be written to");
    }
}

/// Tells the user why it did not end well.
void explain(const Judgement& judgement) {
    if (!judgement.message.empty()) {
        say(judgement.message);
    }
}

ExitStatus runCommand(const Plan& plan) {
    const Options& options = plan.options();
    RootFolder root(plan.workedOn());
    root.makePrivateFolders();
    const Snapshot before = takeSnapshot(root);
    RunResult result = runWorker(options, &root);
    result.changes = compare(before, takeSnapshot(root), options.verbose);
    const Judgement judgement = judge(result);
    explain(judgement);
    print(options.format == Format::Json ? runJson(result, judgement.status) : runText(result));
    return judgement.status;
}

ExitStatus checkCommand(const Plan& plan) {
    const Options& options = plan.options();
    const RunResult result = runWorker(options, nullptr);
    const Judgement judgement = judge(result);
    print(options.format == Format::Json ? checkJson(result) : checkText(result));
    explain(judgement);
    return judgement.status;
}

ExitStatus showCommand(const Plan& plan) {
    const Options& options = plan.options();
    const Snapshot snapshot = takeSnapshot(RootFolder(plan.workedOn()));
    print(options.format == Format::Json ? showJson(snapshot, options.root) : showText(snapshot, options.root));
    return ExitStatus::Done;
}

ExitStatus perform(const Plan& plan) {
    switch (plan.options().command) {
        case Command::Run:
            return runCommand(plan);
        case Command::Check:
            return checkCommand(plan);
        case Command::Show:
            break;
    }
    return showCommand(plan);
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    ExitStatus status = ExitStatus::Done;
    try {
        const ParsedOptions parsed = parseOptions(argc, argv);
        if (parsed.proceed) {
            status = perform(Plan(parsed.options));
        } else if (parsed.status == ExitStatus::Done) {
            print(parsed.text);
        } else {
            throw Failure(parsed.status, parsed.text, parsed.advice);
        }
    } catch (const Failure& failure) {
        say(std::string(failure.what()) + (failure.advice().empty() ? "" : "\n" + failure.advice()));
        status = failure.status();
    } catch (const Interrupted& interrupted) {
        endBySignal(interrupted.signal);
    } catch (const std::exception& fault) {
        say(std::string("the run cannot go on: ") + fault.what());
        status = ExitStatus::RootNotMade;
    }
    // Only now, when the copy of a dry run is gone.
    if (static_cast<int>(status) > SIGNALLED) {
        endBySignal(static_cast<int>(status) - SIGNALLED);
    }
    return static_cast<int>(status);
}
