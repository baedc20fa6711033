#include "platform/Alert/ConsoleAlert.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace cv {

namespace {

/// What stands in front of each line, so that an alert is told from a program's own messages.
constexpr char PREFIX[] = "[alert] ";

const char* styleName(AlertStyle style) {
    switch (style) {
        case AlertStyle::Informational:
            return "Note";
        case AlertStyle::Critical:
            return "Error";
        case AlertStyle::Warning:
            break;
    }
    return "Warning";
}

/// `lines` to standard error, with the prefix on each line, in one piece.
void print(const std::string& lines) {
    std::string out;
    for (std::size_t start = 0; start <= lines.size();) {
        const std::size_t end = std::min(lines.find('\n', start), lines.size());
        out += PREFIX + lines.substr(start, end - start) + '\n';
        start = end + 1;
    }
    std::fwrite(out.data(), 1, out.size(), stderr);
}

/// One line of standard input, without its end; false at the end of input.
bool readLine(std::string& line) {
    line.clear();
    for (int c = std::getchar(); c != EOF; c = std::getchar()) {
        if (c == '\n') {
            return true;
        }
        line += static_cast<char>(c);
    }
    return !line.empty();
}

/// Asks the user at the terminal for a number from 1 to `count` until there is one; 1 for an empty line and at the end
/// of input.
std::size_t askForNumber(std::size_t count) {
    for (std::string line;;) {
        std::fprintf(stderr, "%sNumber of your choice [1]: ", PREFIX);
        if (!readLine(line) || line.empty()) {
            return 1;
        }
        char* end = nullptr;
        const unsigned long choice = std::strtoul(line.c_str(), &end, 10);
        if (*end == '\0' && choice >= 1 && choice <= count) {
            return choice;
        }
        print("'" + line + "' is not a number from 1 to " + std::to_string(count) + ".");
    }
}

}  // namespace

std::size_t askOnConsole(const Alert& alert) {
    std::string choices;
    for (std::size_t i = 0; i < alert.buttons.size(); ++i) {
        choices += (i == 0 ? "" : "   ") + std::to_string(i + 1) + " " + alert.buttons[i];
    }
    print(std::string(styleName(alert.style)) + ": " + alert.message + "\n" + choices);
    if (isatty(STDIN_FILENO) == 1) {
        return askForNumber(alert.buttons.size()) - 1;
    }
    print("There is no display and no terminal to ask; taking 1 " + alert.buttons.front() + ".");
    return 0;
}

}  // namespace cv
