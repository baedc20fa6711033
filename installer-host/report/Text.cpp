#include "installer-host/report/Text.h"

#include <array>
#include <cstdio>

namespace host {

namespace {

/// The length of the well-formed UTF-8 sequence that `text` begins with; 0 when it begins with none.
std::size_t sequenceLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0 || text.size() < length) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80) {
            return 0;
        }
    }
    const bool overlongOrSurrogate = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) >= 0xA0) ||
                                     (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) >= 0x90);
    return overlongOrSurrogate ? 0 : length;
}

std::string escapedByte(unsigned char byte) {
    switch (byte) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        case '"':
        case '\\':
            return {'\\', static_cast<char>(byte)};
        default:
            return "\\x" + hexText({reinterpret_cast<const char*>(&byte), 1});
    }
}

}  // namespace

std::string escaped(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const auto first = static_cast<unsigned char>(text.front());
        std::size_t length = sequenceLength(text);
        const bool c1Control = length == 2 && first == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0;
        if (length == 0 || c1Control || first < 0x20 || first == 0x7F || first == '"' || first == '\\') {
            result += escapedByte(first);
            length = 1;
        } else {
            result += text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    return result;
}

std::string inQuotes(std::string_view text) {
    return '"' + escaped(text) + '"';
}

std::string hexText(std::string_view bytes) {
    constexpr std::string_view DIGITS = "0123456789abcdef";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const char byte : bytes) {
        text += DIGITS[static_cast<unsigned char>(byte) >> 4U];
        text += DIGITS[static_cast<unsigned char>(byte) & 0xFU];
    }
    return text;
}

std::string hexNumber(std::uint32_t value, int digits) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%0*X", digits, value);
    return text.data();
}

}  // namespace host
