#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace cv::plist {

/// What nextCharacter gives for bytes that are not UTF-8.
constexpr char32_t NO_CHARACTER = 0xFFFFFFFF;

/// The character that begins at `position`, which must be inside the text, and moves `position` past it. Overlong forms
/// and surrogates are not UTF-8.
char32_t nextCharacter(std::string_view utf8, std::size_t& position);

/// How many bytes of UTF-8 a character takes: 1 to 4.
std::size_t utf8Size(char32_t character);

/// Appends the character, which is a Unicode scalar value.
void appendUtf8(std::string& text, char32_t character);

constexpr bool isLeadSurrogate(char32_t unit) {
    return (unit & 0xFFFFFC00) == 0xD800;
}
constexpr bool isTrailSurrogate(char32_t unit) {
    return (unit & 0xFFFFFC00) == 0xDC00;
}

}  // namespace cv::plist
