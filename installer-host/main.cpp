// The program installer-host. README.md describes one run from here to the exit status.

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "installer-host/Judgement.h"
#include "installer-host/Message.h"
#include "installer-host/Options.h"
#include "installer-host/Plan.h"
#include "installer-host/look/BundleInfo.h"
#include "installer-host/look/Snapshot.h"
#include "installer-host/report/JsonReport.h"
#include "installer-host/report/TextReport.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/Listener.h"

namespace {

using namespace host;

/// The report could not be written, so an error report could not be written either.
struct OutputLost : std::runtime_error {
    OutputLost() : std::runtime_error("the report could not be written to standard output") {}
};

/// Writes a report, or the help, to standard output, to the last byte.
void print(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        throw OutputLost();
    }
}

/// Explains to the user what went wrong, if anything did.
void explain(const Judgement& judgement) {
    if (!judgement.message.empty()) {
        say(judgement.message);
    }
}

/// Occupies the numbers of standard input, output and error that the caller closed. Otherwise a file that this program
/// opens could get one of them, and the report would go into it. Writing to standard output then fails.
void keepStandardDescriptors() {
    for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(number, F_GETFD) < 0) {
            open("/dev/null", number == STDERR_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

/// Throws Interrupted if the user has asked for the end; for use while there is nothing to report.
void endIfInterrupted() {
    if (const int signal = takeInterruption(); signal != 0) {
        throw Interrupted{signal};
    }
}

/// The folders to look at: all of a private root, and of the machine what the user named.
std::vector<std::string> scopeOf(const Plan& plan) {
    if (!plan.workedOn().empty()) {
        return {"/"};
    }
    std::vector<std::string> scope;
    for (const std::string& folder : plan.options().scope) {
        std::error_code error;
        const std::filesystem::path path = std::filesystem::weakly_canonical(folder, error);
        scope.push_back(error ? folder : path.string());
    }
    return scope;
}

void addMetadata(RunResult& result, const BundleInfo& info) {
    const passwd* user = getpwuid(geteuid());
    result.userId = geteuid();
    result.userName = user == nullptr ? "" : user->pw_name;
    result.bundleIdentifier = info.identifier;
    result.bundleVersion = info.version;
}

ExitStatus runCommand(const Plan& plan) {
    const auto started = std::chrono::system_clock::now();
    const Options& options = plan.options();
    const BundleInfo info = readBundleInfo(options.bundle);
    RootFolder root(plan.workedOn());
    root.makePrivateFolders();
    const std::vector<std::string> scope = scopeOf(plan);
    const Look before = look(root, scope, nullptr, endIfInterrupted);
    RunResult result = runWorker(options, &root);
    result.changes = compare(before, look(root, scope, &before), options.verbose);
    result.started = started;
    addMetadata(result, info);
    const Judgement judgement = judge(result);
    explain(judgement);
    print(options.format == Format::Json ? runJson(result, judgement) : runText(result));
    return judgement.status;
}

ExitStatus checkCommand(const Plan& plan) {
    const Options& options = plan.options();
    const RunResult result = runWorker(options, nullptr);
    const Judgement judgement = judge(result);
    print(options.format == Format::Json ? checkJson(result, judgement) : checkText(result));
    explain(judgement);
    return judgement.status;
}

ExitStatus showCommand(const Plan& plan) {
    const Options& options = plan.options();
    const Snapshot snapshot = takeSnapshot(RootFolder(plan.workedOn()));
    const Judgement judgement = judge(snapshot);
    print(options.format == Format::Json ? showJson(snapshot, options.root, judgement)
                                         : showText(snapshot, options.root));
    explain(judgement);
    return judgement.status;
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

/// Performs the command. When an error prevents the report, JSON output gets an error report in its place.
ExitStatus performAndTell(const Options& options) {
    const auto tell = [&](const Judgement& judgement) {
        explain(judgement);
        if (options.format == Format::Json) {
            print(errorJson(options.command, judgement));
        }
        return judgement.status;
    };
    try {
        endIfInterrupted();
        return perform(Plan(options));
    } catch (const Failure& failure) {
        return tell({failure.status(),
                     std::string(failure.what()) + (failure.advice().empty() ? "" : "\n" + failure.advice())});
    } catch (const Interrupted& interrupted) {
        return tell({static_cast<ExitStatus>(SIGNALLED + interrupted.signal), "the user ended the run"});
    } catch (const OutputLost&) {
        throw;
    } catch (const std::exception& fault) {
        return tell({ExitStatus::RootNotMade, std::string("the run cannot go on: ") + fault.what()});
    }
}

/// Prints the help, the version or what is wrong with the command line.
ExitStatus tellUsage(const ParsedOptions& parsed) {
    if (parsed.status == ExitStatus::Done) {
        print(parsed.text);
        return parsed.status;
    }
    const Judgement judgement{parsed.status, parsed.text + "\n" + parsed.advice};
    explain(judgement);
    if (parsed.options.format == Format::Json) {
        print(errorJson(std::nullopt, judgement));
    }
    return parsed.status;
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    keepStandardDescriptors();
    takeInterruption();  // from now on the user's signals are held until they are asked for
    ExitStatus status = ExitStatus::Done;
    try {
        const ParsedOptions parsed = parseOptions(argc, argv);
        status = parsed.proceed ? performAndTell(parsed.options) : tellUsage(parsed);
    } catch (const OutputLost& lost) {
        say(lost.what());
        status = ExitStatus::NotStored;
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
