#pragma once

#include <optional>
#include <string>

namespace fuzz {

/// The forms of Unicode text, in the plainest way. Each decoder gives nothing for what is not of its form: overlong or
/// cut sequences, unpaired surrogates, numbers beyond the last character. UTF-8 may begin with a byte order mark, which
/// is no part of the text.
std::optional<std::u32string> decodeUtf8(const std::string& text);
std::optional<std::u32string> decodeUtf16(const std::u16string& text);
std::optional<std::u32string> decodeMacRoman(const std::string& text);
std::optional<std::u32string> decodeUtf32(const std::u32string& text);

std::string encodeUtf8(const std::u32string& text);
std::u16string encodeUtf16(const std::u32string& text);

/// Nothing when there is a character that Mac OS Roman lacks.
std::optional<std::string> encodeMacRoman(const std::u32string& text);

}  // namespace fuzz
