#include "fuzz/UtfModel.h"

#include <string_view>

namespace fuzz {

namespace {

bool isScalar(char32_t c) {
    return c < 0xD800 || (c > 0xDFFF && c < 0x110000);
}

/// The characters of the bytes from 0x80 on, as Apple's table MacRoman has them since the euro.
constexpr std::u32string_view MAC_ROMAN =
    U"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªºΩæø"
    U"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ";
static_assert(MAC_ROMAN.size() == 128);

std::string encodeOne(char32_t c) {
    const auto tail = [c](int shift) { return static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
    if (c < 0x80) {
        return {static_cast<char>(c)};
    }
    if (c < 0x800) {
        return {static_cast<char>(0xC0 | (c >> 6)), tail(0)};
    }
    if (c < 0x10000) {
        return {static_cast<char>(0xE0 | (c >> 12)), tail(6), tail(0)};
    }
    return {static_cast<char>(0xF0 | (c >> 18)), tail(12), tail(6), tail(0)};
}

/// The character whose only UTF-8 form begins the text; none when there is no such character.
std::optional<char32_t> firstOf(const std::string& text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(i < text.size() ? text[i] : 0); };
    const char32_t guesses[] = {
        byte(0),
        static_cast<char32_t>(((byte(0) & 0x1F) << 6) | (byte(1) & 0x3F)),
        static_cast<char32_t>(((byte(0) & 0xF) << 12) | ((byte(1) & 0x3F) << 6) | (byte(2) & 0x3F)),
        static_cast<char32_t>(((byte(0) & 7) << 18) | ((byte(1) & 0x3F) << 12) | ((byte(2) & 0x3F) << 6) |
                              (byte(3) & 0x3F)),
    };
    for (const char32_t guess : guesses) {
        const std::string form = encodeOne(guess);
        if (isScalar(guess) && text.compare(0, form.size(), form) == 0) {
            return guess;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::u32string> decodeUtf8(const std::string& text) {
    std::u32string result;
    for (std::size_t i = text.rfind("\xEF\xBB\xBF", 0) == 0 ? 3 : 0; i < text.size();) {
        const std::optional<char32_t> c = firstOf(text.substr(i, 4));
        if (!c) {
            return std::nullopt;
        }
        result += *c;
        i += encodeOne(*c).size();
    }
    return result;
}

std::optional<std::u32string> decodeUtf16(const std::u16string& text) {
    std::u32string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isLead = text[i] >= 0xD800 && text[i] < 0xDC00;
        const char16_t next = isLead && i + 1 < text.size() ? text[i + 1] : u'\0';
        if (next >= 0xDC00 && next < 0xE000) {
            result += static_cast<char32_t>(0x10000 + (text[i] - 0xD800) * 0x400 + (next - 0xDC00));
            ++i;
        } else {
            result += text[i];
        }
    }
    return decodeUtf32(result);
}

std::optional<std::u32string> decodeMacRoman(const std::string& text) {
    std::u32string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        result += byte < 0x80 ? static_cast<char32_t>(byte) : MAC_ROMAN[byte - 0x80U];
    }
    return result;
}

std::optional<std::u32string> decodeUtf32(const std::u32string& text) {
    for (const char32_t c : text) {
        if (!isScalar(c)) {
            return std::nullopt;
        }
    }
    return text;
}

std::string encodeUtf8(const std::u32string& text) {
    std::string result;
    for (const char32_t c : text) {
        result += encodeOne(c);
    }
    return result;
}

std::u16string encodeUtf16(const std::u32string& text) {
    std::u16string result;
    for (const char32_t c : text) {
        if (c >= 0x10000) {
            result += static_cast<char16_t>(0xD800 + (c - 0x10000) / 0x400);
        }
        result += static_cast<char16_t>(c < 0x10000 ? c : 0xDC00 + c % 0x400);
    }
    return result;
}

std::optional<std::string> encodeMacRoman(const std::u32string& text) {
    std::string result;
    for (const char32_t c : text) {
        const std::size_t place = MAC_ROMAN.find(c);
        if (c >= 0x80 && place == std::u32string_view::npos) {
            return std::nullopt;
        }
        result += static_cast<char>(c < 0x80 ? c : 0x80 + place);
    }
    return result;
}

}  // namespace fuzz
