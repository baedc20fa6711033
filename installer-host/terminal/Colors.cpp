#include "installer-host/terminal/Colors.h"

#include <unistd.h>

#include <cstdlib>

namespace host {

namespace {

ColorWhen g_when = ColorWhen::Auto;

std::string_view variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

}  // namespace

void chooseColors(ColorWhen when) {
    g_when = when;
}

bool hasColors(int stream) {
    if (g_when != ColorWhen::Auto) {
        return g_when == ColorWhen::Always;
    }
    const std::string_view kind = variable("TERM");
    return isatty(stream) == 1 && variable("NO_COLOR").empty() && !kind.empty() && kind != "dumb";
}

std::string paintedFor(int stream, std::string_view text, Paint paint) {
    return hasColors(stream) ? painted(text, paint) : std::string(text);
}

}  // namespace host
