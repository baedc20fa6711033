#include "installer-host/report/Paint.h"

#include <algorithm>

namespace host {

namespace {

const char* codeOf(Paint paint) {
    switch (paint) {
        case Paint::Plain:
            break;
        case Paint::Heading:
            return "1";
        case Paint::Added:
        case Paint::Good:
            return "32";
        case Paint::Changed:
            return "33";
        case Paint::Removed:
            return "31";
        case Paint::Moved:
            return "36";
        case Paint::Bad:
            return "1;31";
    }
    return "";
}

bool beginsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

/// What a line says by the sign that it begins with: "+ file ...".
Paint paintOfSign(std::string_view text) {
    if (text.size() < 2 || text[1] != ' ') {
        return Paint::Plain;
    }
    switch (text[0]) {
        case '+':
            return Paint::Added;
        case '~':
            return Paint::Changed;
        case '-':
            return Paint::Removed;
        case '>':
            return Paint::Moved;
        default:
            return Paint::Plain;
    }
}

/// What became of a step, from its line: "post-install step done in 0.012 s".
Paint paintOfStep(std::string_view text) {
    constexpr std::string_view STEP = "step ";
    const std::size_t outcome = text.find_first_not_of(' ', std::min(text.find(STEP), text.size() - 1) + STEP.size());
    const std::string_view words = text.substr(std::min(outcome, text.size()));
    return beginsWith(words, "done") || beginsWith(words, "not run") ? Paint::Plain : Paint::Bad;
}

/// Follows the sections of a report: where a sign or a word stands says what it means.
class ReportPainter {
public:
    Paint paintOf(std::string_view line) {
        const std::size_t indent = std::min(line.find_first_not_of(' '), line.size());
        if (indent == 0) {
            section_ = line;
            return line.empty() ? Paint::Plain : paintOfHead(line);
        }
        // What goes on in the next line is farther in than anything that begins one.
        if (indent <= signColumn() + 2) {
            last_ = paintOfBeginning(line.substr(indent), indent);
        }
        return last_;
    }

private:
    bool isIn(std::string_view section) const { return beginsWith(section_, section); }

    std::size_t signColumn() const { return isIn("Preferences") || isIn("Put back") ? 4 : 2; }

    Paint paintOfHead(std::string_view line) {
        last_ = Paint::Plain;
        return beginsWith(line, "In all: ") ? Paint::Plain : Paint::Heading;
    }

    Paint paintOfBeginning(std::string_view text, std::size_t indent) const {
        if (isIn("Steps")) {
            return paintOfStep(text);
        }
        if (isIn("Problems") || isIn("Not put back") || beginsWith(text, "failed  ") || beginsWith(text, "! ")) {
            return Paint::Bad;
        }
        if (isIn("Finder flags")) {
            return text.find(" -> ") != std::string_view::npos ? Paint::Changed : Paint::Plain;
        }
        const bool hasSigns = isIn("Preferences (") || isIn("Put back (") || isIn("Files and folders (");
        return hasSigns && indent == signColumn() ? paintOfSign(text) : Paint::Plain;
    }

    std::string_view section_;
    Paint last_ = Paint::Plain;
};

}  // namespace

std::string painted(std::string_view text, Paint paint) {
    const bool isPlain = paint == Paint::Plain || text.empty();
    return isPlain ? std::string(text) : std::string("\033[") + codeOf(paint) + "m" + std::string(text) + "\033[0m";
}

std::string paintedReport(std::string_view report) {
    std::string text;
    ReportPainter painter;
    while (!report.empty()) {
        const std::size_t end = std::min(report.find('\n'), report.size());
        const std::string_view line = report.substr(0, end);
        const Paint paint = painter.paintOf(line);
        const std::size_t indent = std::min(line.find_first_not_of(' '), line.size());
        text += std::string(line.substr(0, indent)) + painted(line.substr(indent), paint);
        text += end < report.size() ? "\n" : "";
        report.remove_prefix(std::min(end + 1, report.size()));
    }
    return text;
}

}  // namespace host
