#include "installer-host/run/ChildOutput.h"

#include <unistd.h>

#include <algorithm>
#include <array>

#include "installer-host/EventLog.h"
#include "installer-host/Message.h"

namespace host {

namespace {

constexpr std::size_t MOST_OUTPUT = 1U << 20U;
constexpr std::size_t LONGEST_KEPT_LINE = 1000;

}  // namespace

Watcher ChildOutput::watcher() {
    return {pipe_.read.get(), [this] {
                std::array<char, 4096> buffer;
                const ssize_t count = read(pipe_.read.get(), buffer.data(), buffer.size());
                if (count > 0) {
                    pass({buffer.data(), static_cast<std::size_t>(count)});
                }
                return Watching::GoOn;
            }};
}

void ChildOutput::pass(std::string_view text) {
    keepLastLine(text);
    if (passed_ >= MOST_OUTPUT) {
        return;
    }
    std::string out;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size() - 1) + 1;
        out += (isAtLineStart_ ? "| " : "") + printable(text.substr(start, end - start));
        isAtLineStart_ = out.back() == '\n';
        start = end;
    }
    passed_ += text.size();
    if (passed_ >= MOST_OUTPUT) {
        out += "\n| (there was more)\n";
    }
    passOn(out);
}

void ChildOutput::keepLastLine(std::string_view text) {
    for (const char c : text) {
        if (c != '\n' && line_.size() < LONGEST_KEPT_LINE) {
            line_ += c;
        } else if (c == '\n' && !line_.empty()) {
            if (passed_ < MOST_OUTPUT) {
                logEvent("output", line_);
            }
            lastLine_ = std::move(line_);
            line_.clear();
        }
    }
}

}  // namespace host
