#include "platform/PropertyList/Utf.h"

namespace cv::plist {

namespace {

constexpr char32_t LAST_CHARACTER = 0x10FFFF;

/// How many bytes a character takes that begins with this one; 0 when none does.
std::size_t sizeByFirst(unsigned char first) {
    return first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
}

}  // namespace

char32_t nextCharacter(std::string_view utf8, std::size_t& position) {
    const auto first = static_cast<unsigned char>(utf8[position]);
    const std::size_t size = sizeByFirst(first);
    if (size == 0 || size > utf8.size() - position) {
        return NO_CHARACTER;
    }
    char32_t character = size == 1 ? first : first & (0x7FU >> size);
    for (std::size_t i = 1; i < size; ++i) {
        const auto next = static_cast<unsigned char>(utf8[position + i]);
        if ((next & 0xC0U) != 0x80) {
            return NO_CHARACTER;
        }
        character = character << 6 | (next & 0x3FU);
    }
    position += size;
    const bool isSurrogate = (character & 0xFFFFF800) == 0xD800;
    return isSurrogate || character > LAST_CHARACTER || utf8Size(character) != size ? NO_CHARACTER : character;
}

std::size_t utf8Size(char32_t character) {
    return character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
}

void appendUtf8(std::string& text, char32_t character) {
    const std::size_t size = utf8Size(character);
    const auto byte = [](char32_t bits) { return static_cast<char>(static_cast<unsigned char>(bits)); };
    if (size == 1) {
        text += byte(character);
        return;
    }
    text += byte((0xF00U >> size & 0xFF) | character >> 6 * (size - 1));
    for (std::size_t i = size - 1; i-- > 0;) {
        text += byte(0x80 | (character >> 6 * i & 0x3F));
    }
}

}  // namespace cv::plist
