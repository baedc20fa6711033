#include "installer-host/commands/Output.h"

#include <cstdio>
#include <exception>

#include "installer-host/Message.h"
#include "installer-host/run/ChildProcess.h"

namespace host {

void print(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        throw OutputLost();
    }
}

std::string formatted(const Json& document, Format) {
    return jsonText(document);
}

void explain(const Judgement& judgement) {
    if (!judgement.message.empty()) {
        say(judgement.message);
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
