#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace fuzz {

// The forms of Unicode text, in the plainest way. Each decoder gives nothing for what is not of its form: overlong or
// cut sequences, unpaired surrogates, numbers beyond the last character.

inline std::string encodeUtf8(const std::u32string& text) {
    std::string result;
    for (const char32_t c : text) {
        const auto byte = [c](unsigned int mark, int shift) { return static_cast<char>(mark | (c >> shift)); };
        const auto tail = [c](int shift) { return static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
        result += c < 0x80      ? std::string{byte(0, 0)}
                  : c < 0x800   ? std::string{byte(0xC0, 6), tail(0)}
                  : c < 0x10000 ? std::string{byte(0xE0, 12), tail(6), tail(0)}
                                : std::string{byte(0xF0, 18), tail(12), tail(6), tail(0)};
    }
    return result;
}

inline std::optional<std::u32string> decodeUtf32(const std::u32string& text) {
    const auto isScalar = [](char32_t c) { return c < 0xD800 || (c > 0xDFFF && c < 0x110000); };
    return std::all_of(text.begin(), text.end(), isScalar) ? std::optional(text) : std::nullopt;
}

/// A byte order mark at the beginning is no part of the text. What is no sequence becomes a character that is none.
inline std::optional<std::u32string> decodeUtf8(const std::string& text) {
    std::u32string result;
    for (std::size_t i = text.rfind("\xEF\xBB\xBF", 0) == 0 ? 3 : 0; i < text.size();) {
        const auto first = static_cast<unsigned char>(text[i]);
        const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        const std::string sequence = text.substr(i, length);
        char32_t c = length == 1 ? first : first & (0x7FU >> length);
        for (std::size_t tail = 1; tail < sequence.size(); ++tail) {
            c = c << 6 | (static_cast<unsigned char>(sequence[tail]) & 0x3FU);
        }
        result += encodeUtf8({c}) == sequence ? c : char32_t{0xFFFFFFFF};
        i += length;
    }
    return decodeUtf32(result);
}

inline std::optional<std::u32string> decodeUtf16(const std::u16string& text) {
    std::u32string result;
    for (const char16_t unit : text) {
        const char32_t lead = result.empty() ? 0 : result.back();
        if (lead >= 0xD800 && lead < 0xDC00 && unit >= 0xDC00 && unit < 0xE000) {
            result.back() = 0x10000 + (lead - 0xD800) * 0x400 + (unit - 0xDC00U);
        } else {
            result += unit;
        }
    }
    return decodeUtf32(result);
}

inline std::u16string encodeUtf16(const std::u32string& text) {
    std::u16string result;
    for (const char32_t c : text) {
        result += c < 0x10000 ? u"" : std::u16string(1, static_cast<char16_t>(0xD800 + (c - 0x10000) / 0x400));
        result += static_cast<char16_t>(c < 0x10000 ? c : 0xDC00 + c % 0x400);
    }
    return result;
}

/// The characters of Mac OS Roman from 0x80 on, as the table has them since the euro.
inline constexpr std::u32string_view MAC_ROMAN =
    U"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªºΩæø"
    U"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ";
static_assert(MAC_ROMAN.size() == 128);

inline std::u32string decodeMacRoman(const std::string& text) {
    std::u32string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        result += byte < 0x80 ? char32_t{byte} : MAC_ROMAN[byte - 0x80U];
    }
    return result;
}

/// Nothing when there is a character that Mac OS Roman lacks.
inline std::optional<std::string> encodeMacRoman(const std::u32string& text) {
    std::string result;
    for (const char32_t c : text) {
        const std::size_t place = c < 0x80 ? c : 0x80 + MAC_ROMAN.find(c);
        if (place > 0xFF || (c >= 0x80 && place < 0x80)) {
            return std::nullopt;
        }
        result += static_cast<char>(place);
    }
    return result;
}

}  // namespace fuzz
