#include "installer-host/Message.h"

#include <array>
#include <cstddef>
#include <cstdio>

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

void say(const std::string& message) {
    std::string text = printable(message);
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', end + 1)) {
        text.insert(end + 1, "  ");
    }
    writeError("installer-host: " + text + "\n");
}

}  // namespace host
