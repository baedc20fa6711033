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
    // Those that turn the direction of writing, or part lines, let a name look like another.
    const bool isLayout = (character >= 0x200B && character <= 0x200F) ||
                          (character >= 0x2028 && character <= 0x202E) ||
                          (character >= 0x2060 && character <= 0x206F) || character == 0xFEFF;
    return !isControl && !isLayout && character != cv::plist::NO_CHARACTER;
}

bool isQuoteOrBackslash(char32_t character) {
    return character == '"' || character == '\\';
}

std::string escapedWhere(bool (*isKept)(char32_t), std::string_view text) {
    std::string result;
    for (std::size_t position = 0; position < text.size();) {
        std::size_t end = position;
        if (isKept(cv::plist::nextCharacter(text, end))) {
            result += text.substr(position, end - position);
            position = end;
        } else {
            result += escapedByte(text[position++]);
        }
    }
    return result;
}

}  // namespace

std::string escaped(std::string_view text) {
    return escapedWhere([](char32_t character) { return isPlain(character) && !isQuoteOrBackslash(character); }, text);
}

std::string visible(std::string_view text) {
    return escapedWhere(isPlain, text);
}

std::string inQuotes(std::string_view text) {
    return '"' + escaped(text) + '"';
}

std::string hexNumber(std::uint32_t value, int digits) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%0*X", digits, value);
    return text.data();
}

std::string counted(std::size_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string secondsText(std::chrono::milliseconds time) {
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.3f s", static_cast<double>(time.count()) / 1000);
    return text.data();
}

}  // namespace host
