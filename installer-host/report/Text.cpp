#include "installer-host/report/Text.h"

#include <array>
#include <cstdio>

#include "platform/PropertyList/Utf.h"

namespace host {

namespace {

std::string escapedByte(char byte) {
    switch (byte) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        case '"':
        case '\\':
            return {'\\', byte};
        default:
            break;
    }
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
    return text.data();
}

bool isPlain(char32_t character) {
    const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
    return !isControl && character != '"' && character != '\\' && character != cv::plist::NO_CHARACTER;
}

}  // namespace

std::string escaped(std::string_view text) {
    std::string result;
    for (std::size_t position = 0; position < text.size();) {
        std::size_t end = position;
        if (isPlain(cv::plist::nextCharacter(text, end))) {
            result += text.substr(position, end - position);
            position = end;
        } else {
            result += escapedByte(text[position++]);
        }
    }
    return result;
}

std::string inQuotes(std::string_view text) {
    return '"' + escaped(text) + '"';
}

std::string hexNumber(std::uint32_t value, int digits) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%0*X", digits, value);
    return text.data();
}

}  // namespace host
