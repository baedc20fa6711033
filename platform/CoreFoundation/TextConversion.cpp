#include "platform/CoreFoundation/TextConversion.h"

#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

namespace cv {
namespace {

constexpr std::size_t LONGEST = std::numeric_limits<std::int32_t>::max();

std::int32_t length32(std::size_t length) {
    return static_cast<std::int32_t>(length);
}

bool isPaired(std::u16string_view units) {
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (!U16_IS_SURROGATE(units[i])) {
            continue;
        }
        if (!U16_IS_SURROGATE_LEAD(units[i]) || i + 1 == units.size() || !U16_IS_TRAIL(units[i + 1])) {
            return false;
        }
        ++i;
    }
    return true;
}

std::optional<std::u16string> decodeUTF8(std::string_view bytes) {
    constexpr std::string_view MARK = "\xEF\xBB\xBF";
    if (bytes.substr(0, MARK.size()) == MARK) {
        bytes.remove_prefix(MARK.size());
    }
    std::u16string units(bytes.size(), u'\0');
    std::int32_t count = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8(units.data(), length32(units.size()), &count, bytes.data(), length32(bytes.size()), &error);
    if (U_FAILURE(error)) {
        return std::nullopt;
    }
    units.resize(static_cast<std::size_t>(count));
    return units;
}

std::optional<std::u16string> decodeUTF16(std::string_view bytes) {
    constexpr char16_t MARK = 0xFEFF;
    constexpr char16_t SWAPPED_MARK = 0xFFFE;
    if (bytes.size() % sizeof(char16_t) != 0) {
        return std::nullopt;
    }
    std::u16string units(bytes.size() / sizeof(char16_t), u'\0');
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(units.data()));
    if (!units.empty() && units.front() == SWAPPED_MARK) {
        for (char16_t& unit : units) {
            unit = static_cast<char16_t>(unit << 8 | unit >> 8);
        }
    }
    if (!units.empty() && units.front() == MARK) {
        units.erase(0, 1);
    }
    if (!isPaired(units)) {
        return std::nullopt;
    }
    return units;
}

std::optional<std::u16string> decodeUTF32LE(std::string_view bytes) {
    if (bytes.size() % sizeof(UChar32) != 0) {
        return std::nullopt;
    }
    std::u16string units;
    units.reserve(bytes.size() / sizeof(UChar32));
    for (std::size_t i = 0; i < bytes.size(); i += sizeof(UChar32)) {
        const auto byte = [&](std::size_t index) {
            return std::uint32_t{static_cast<unsigned char>(bytes[i + index])};
        };
        const std::uint32_t character = byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24;
        if (character > 0x10FFFF || U_IS_SURROGATE(character)) {
            return std::nullopt;
        }
        if (U_IS_BMP(character)) {
            units += static_cast<char16_t>(character);
        } else {
            units += static_cast<char16_t>(U16_LEAD(character));
            units += static_cast<char16_t>(U16_TRAIL(character));
        }
    }
    return units;
}

/// Leaves the error as it is, which ends the conversion. ICU's own callback for that skips the characters that Unicode
/// calls ignorable (U+00AD, U+200B, U+FEFF, ...).
void stopAtEveryCharacter(const void*, UConverterFromUnicodeArgs*, const UChar*, std::int32_t, UChar32,
                          UConverterCallbackReason, UErrorCode*) {}

/// A strict converter for an 8-bit encoding; null for every other one. ICU always has these two, so what fails is the
/// memory: std::bad_alloc.
icu::LocalUConverterPointer openConverter(CFStringEncoding encoding) {
    const char* name = encoding == kCFStringEncodingMacRoman ? "macintosh"
                       : encoding == kCFStringEncodingASCII  ? "US-ASCII"
                                                             : nullptr;
    if (name == nullptr) {
        return icu::LocalUConverterPointer();
    }
    UErrorCode error = U_ZERO_ERROR;
    icu::LocalUConverterPointer converter(ucnv_open(name, &error));
    ucnv_setToUCallBack(converter.getAlias(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    ucnv_setFromUCallBack(converter.getAlias(), stopAtEveryCharacter, nullptr, nullptr, nullptr, &error);
    if (U_FAILURE(error)) {
        throw std::bad_alloc();
    }
    ucnv_setFallback(converter.getAlias(), false);
    return converter;
}

/// Whether a conversion succeeded; false when the text does not convert or the buffer is full. Throws std::bad_alloc
/// when it is neither.
bool isConverted(UErrorCode error) {
    if (error == U_MEMORY_ALLOCATION_ERROR) {
        throw std::bad_alloc();
    }
    return U_SUCCESS(error);
}

std::optional<std::u16string> decodeBytes(std::string_view bytes, CFStringEncoding encoding) {
    const icu::LocalUConverterPointer converter = openConverter(encoding);
    if (converter.isNull()) {
        return std::nullopt;
    }
    std::u16string units(bytes.size(), u'\0');
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t count = ucnv_toUChars(converter.getAlias(), units.data(), length32(units.size()), bytes.data(),
                                             length32(bytes.size()), &error);
    if (!isConverted(error)) {
        return std::nullopt;
    }
    units.resize(static_cast<std::size_t>(count));
    return units;
}

}  // namespace

std::optional<std::u16string> decodeText(std::string_view bytes, CFStringEncoding encoding) {
    if (bytes.size() > LONGEST) {
        return std::nullopt;
    }
    switch (encoding) {
        case kCFStringEncodingUTF8:
            return decodeUTF8(bytes);
        case kCFStringEncodingUTF16:
            return decodeUTF16(bytes);
        case kCFStringEncodingUTF32LE:
            return decodeUTF32LE(bytes);
        default:
            return decodeBytes(bytes, encoding);
    }
}

std::optional<std::size_t> encodeText(std::u16string_view units, CFStringEncoding encoding, char* buffer,
                                      std::size_t capacity) {
    if (units.size() > LONGEST) {
        return std::nullopt;
    }
    const std::int32_t room = length32(std::min(capacity, LONGEST));
    std::int32_t count = 0;
    UErrorCode error = U_ZERO_ERROR;
    if (encoding == kCFStringEncodingUTF8) {
        u_strToUTF8(buffer, room, &count, units.data(), length32(units.size()), &error);
    } else {
        const icu::LocalUConverterPointer converter = openConverter(encoding);
        if (converter.isNull()) {
            return std::nullopt;
        }
        count = ucnv_fromUChars(converter.getAlias(), buffer, room, units.data(), length32(units.size()), &error);
    }
    return isConverted(error) ? std::optional<std::size_t>(static_cast<std::size_t>(count)) : std::nullopt;
}

}  // namespace cv
