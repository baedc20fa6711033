#include "installer-host/commands/Output.h"

#include <cstdio>

#include "installer-host/Message.h"
#include "installer-host/page/HtmlPage.h"
#include "installer-host/run/ChildProcess.h"

namespace host {

void print(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        throw OutputLost();
    }
}

std::string formatted(const Json& document, Format format) {
    return format == Format::Html ? htmlPage(document) : jsonText(document);
}

void explain(const Judgement& judgement) {
    if (!judgement.message.empty()) {
        say(judgement.message);
    }
}

void endIfInterrupted() {
    if (const int signal = takeInterruption(); signal != 0) {
        throw Interrupted{signal};
    }
}

}  // namespace host
