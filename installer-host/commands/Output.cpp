#include "installer-host/commands/Output.h"

#include <unistd.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <system_error>
#include <vector>

#include "installer-host/EventLog.h"
#include "installer-host/Message.h"
#include "installer-host/look/Places.h"
#include "installer-host/look/PrivateFolders.h"
#include "installer-host/page/HtmlPage.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/terminal/Colors.h"
#include "installer-host/terminal/Terminal.h"

namespace host {

namespace {

namespace fs = std::filesystem;

/// The log must not change what the command looks at.
void refuseLookedAt(const Options& options) {
    std::vector<std::string> folders = options.scope;
    for (const char* name : PRIVATE_FOLDERS) {
        if (!options.root.empty()) {
            folders.push_back(pathInRoot(options.root, name));
        }
    }
    for (const std::string& folder : folders) {
        std::error_code ignored;
        const fs::path log = fs::weakly_canonical(fs::absolute(options.log, ignored), ignored);
        if (liesIn(log.parent_path(), fs::weakly_canonical(folder, ignored))) {
            throw Failure(ExitStatus::Usage, "--log: '" + options.log + "' lies in '" + folder + "'",
                          "Each line of the log would be a change there; choose a file somewhere else.");
        }
    }
}

}  // namespace

void beginAsAsked(const Options& options) {
    chooseColors(options.color);
    chooseTalk(options.quiet          ? Talk::Quiet
               : options.verbose == 0 ? Talk::Usual
               : options.verbose == 1 ? Talk::Verbose
                                      : Talk::Detailed);
    if (options.quiet) {
        keepStill();
    }
    if (!options.log.empty()) {
        refuseLookedAt(options);
        openLog(options.log);
    }
}

void print(const std::string& text) {
    const Still still;
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        throw OutputLost();
    }
}

void printText(const std::string& report) {
    print(hasColors(STDOUT_FILENO) ? paintedReport(report) : report);
}

std::string formatted(const Json& document, Format format) {
    return format == Format::Html ? htmlPage(document) : jsonText(document);
}

void explain(const Judgement& judgement) {
    if (!judgement.message.empty()) {
        sayWhatFailed(judgement.message);
    }
}

Judgement judgementOfException() {
    try {
        throw;
    } catch (const Failure& failure) {
        return {failure.status(),
                std::string(failure.what()) + (failure.advice().empty() ? "" : "\n" + failure.advice())};
    } catch (const Interrupted& interrupted) {
        return {static_cast<ExitStatus>(SIGNALLED + interrupted.signal), "the user ended the run"};
    } catch (const OutputLost&) {
        throw;
    } catch (const std::exception& fault) {
        return {ExitStatus::RootNotMade, std::string("the run cannot go on: ") + fault.what()};
    }
}

void endIfInterrupted() {
    if (const int signal = takeInterruption(); signal != 0) {
        throw Interrupted{signal};
    }
}

}  // namespace host
