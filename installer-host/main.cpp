// The program installer-host. README.md describes one run from here to the exit status.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <optional>
#include <string>

#include "installer-host/EventLog.h"
#include "installer-host/Message.h"
#include "installer-host/commands/Commands.h"
#include "installer-host/commands/Output.h"
#include "installer-host/options/Options.h"
#include "installer-host/report/JsonReport.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/terminal/Colors.h"

namespace {

using namespace host;

/// Occupies the numbers of standard input, output and error that the caller closed. Otherwise a file that this program
/// opens could get one of them, and the report would go into it. Writing to standard output then fails.
void keepStandardDescriptors() {
    for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(number, F_GETFD) < 0) {
            open("/dev/null", number == STDERR_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

ExitStatus perform(const Options& options) {
    switch (options.command) {
        case Command::Run:
            return runCommand(options);
        case Command::Matrix:
            return matrixCommand(options);
        case Command::Undo:
            return undoCommand(options);
        case Command::Check:
            return checkCommand(options);
        case Command::Show:
            break;
    }
    return showCommand(options);
}

/// Performs the command. When an error prevents the report, JSON output gets an error report in its place.
ExitStatus performAndTell(const Options& options, const std::string& commandLine) {
    try {
        beginAsAsked(options);
        logEvent("starts", commandLine);
        endIfInterrupted();
        return perform(options);
    } catch (...) {
        const Judgement judgement = judgementOfException();
        explain(judgement);
        if (options.format != Format::Text) {
            print(formatted(errorDocument(options.command, judgement), options.format));
        }
        return judgement.status;
    }
}

/// The command line in one line, for the log.
std::string joined(int argc, char** argv) {
    std::string line = "installer-host";
    for (int i = 1; i < argc; ++i) {
        line += std::string(" ") + argv[i];
    }
    return line;
}

/// Prints the help, the version or what is wrong with the command line.
ExitStatus tellUsage(const ParsedOptions& parsed) {
    if (parsed.status == ExitStatus::Done) {
        print(parsed.text);
        return parsed.status;
    }
    chooseColors(parsed.options.color);
    const Judgement judgement{parsed.status, parsed.text + "\n" + parsed.advice};
    explain(judgement);
    if (parsed.options.format != Format::Text) {
        print(formatted(errorDocument(std::nullopt, judgement), parsed.options.format));
    }
    return parsed.status;
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL);  // where the caller ignores it, nobody learns how a child ended
    keepStandardDescriptors();
    takeInterruption();  // from now on the user's signals are held until they are asked for
    ExitStatus status = ExitStatus::Done;
    try {
        const ParsedOptions parsed = parseOptions(argc, argv);
        status = parsed.proceed ? performAndTell(parsed.options, joined(argc, argv)) : tellUsage(parsed);
    } catch (const OutputLost& lost) {
        sayWhatFailed(lost.what());
        status = ExitStatus::NotStored;
    } catch (const std::exception& fault) {
        sayWhatFailed(std::string("the run cannot go on: ") + fault.what());
        status = ExitStatus::RootNotMade;
    }
    logEvent("exits", "with status " + std::to_string(static_cast<int>(status)));
    // Only now, when the copy of a dry run is gone.
    if (static_cast<int>(status) > SIGNALLED) {
        endBySignal(static_cast<int>(status) - SIGNALLED);
    }
    return static_cast<int>(status);
}
