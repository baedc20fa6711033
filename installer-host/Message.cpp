#include "installer-host/Message.h"

#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <utility>

#include "installer-host/EventLog.h"
#include "installer-host/terminal/Colors.h"
#include "installer-host/terminal/Terminal.h"
#include "platform/PropertyList/Utf.h"

namespace host {

namespace {

bool isHarmless(char32_t character) {
    const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
    const bool turnsDirection =
        (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
    return character == '\n' || character == '\t' ||
           (!isControl && !turnsDirection && character != cv::plist::NO_CHARACTER);
}

Talk g_talk = Talk::Usual;
std::string g_heldBack;

std::string asMessage(const std::string& message, Paint paint) {
    std::string text = printable(message);
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', end + 1)) {
        text.insert(end + 1, "  ");
    }
    return paintedFor(STDERR_FILENO, "installer-host:", paint) + " " + text + "\n";
}

}  // namespace

std::string printable(std::string_view text) {
    std::string result;
    for (std::size_t position = 0; position < text.size();) {
        std::size_t end = position;
        const bool isPlain = isHarmless(cv::plist::nextCharacter(text, end));
        end = isPlain ? end : position + 1;
        if (isPlain) {
            result += text.substr(position, end - position);
        } else {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\x%02x", static_cast<unsigned char>(text[position]));
            result += escape.data();
        }
        position = end;
    }
    return result;
}

void chooseTalk(Talk talk) {
    g_talk = talk;
}

void say(const std::string& message) {
    logEvent("message", message);
    writeError(asMessage(message, Paint::Heading));
}

void sayWhatFailed(const std::string& message) {
    logEvent("failure", message);
    writeError(std::exchange(g_heldBack, "") + asMessage(message, Paint::Bad));
}

void remark(Talk least, const std::string& message) {
    if (least == Talk::Usual) {
        logEvent("message", message);
    }
    if (g_talk == Talk::Quiet && least == Talk::Usual) {
        g_heldBack += asMessage(message, Paint::Heading);
    } else if (least <= g_talk) {
        writeError(asMessage(message, Paint::Heading));
    }
}

void passOn(std::string_view text) {
    if (g_talk == Talk::Quiet) {
        g_heldBack += text;
    } else {
        writeError(text);
    }
}

}  // namespace host
