#include "platform/CoreFoundation/TextConversion.h"

#include <unicode/ucnv.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>

#include "platform/CoreFoundation/Utf8.h"

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

/// `bytes` without the mark at their start, if there is one.
std::string_view withoutMark(std::string_view bytes) {
    constexpr std::string_view MARK = "\xEF\xBB\xBF";
    return bytes.substr(0, MARK.size()) == MARK ? bytes.substr(MARK.size()) : bytes;
}

std::optional<std::size_t> decodeUTF16(std::string_view bytes, char16_t* units) {
    constexpr char16_t MARK = 0xFEFF;
    constexpr char16_t SWAPPED_MARK = 0xFFFE;
    if (bytes.size() % sizeof(char16_t) != 0) {
        return std::nullopt;
    }
    std::size_t count = bytes.size() / sizeof(char16_t);
    bytes.copy(reinterpret_cast<char*>(units), bytes.size());
    if (count != 0 && *units == SWAPPED_MARK) {
        std::transform(units, units + count, units,
                       [](char16_t unit) { return static_cast<char16_t>(unit << 8 | unit >> 8); });
    }
    if (count != 0 && *units == MARK) {
        --count;
        std::copy(units + 1, units + 1 + count, units);
    }
    return isPaired({units, count}) ? std::optional<std::size_t>(count) : std::nullopt;
}

std::optional<std::size_t> decodeUTF32LE(std::string_view bytes, char16_t* units) {
    if (bytes.size() % sizeof(UChar32) != 0) {
        return std::nullopt;
    }
    std::size_t count = 0;
    for (std::size_t i = 0; i < bytes.size(); i += sizeof(UChar32)) {
        const auto byte = [&](std::size_t index) {
            return std::uint32_t{static_cast<unsigned char>(bytes[i + index])};
        };
        const std::uint32_t character = byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24;
        if (character > 0x10FFFF || U_IS_SURROGATE(character)) {
            return std::nullopt;
        }
        U16_APPEND_UNSAFE(units, count, character);
    }
    return count;
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

std::optional<std::size_t> decodeBytes(std::string_view bytes, CFStringEncoding encoding, char16_t* units) {
    const icu::LocalUConverterPointer converter = openConverter(encoding);
    if (converter.isNull()) {
        return std::nullopt;
    }
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t count = ucnv_toUChars(converter.getAlias(), units, length32(bytes.size()), bytes.data(),
                                             length32(bytes.size()), &error);
    return isConverted(error) ? std::optional<std::size_t>(static_cast<std::size_t>(count)) : std::nullopt;
}

}  // namespace

std::optional<std::size_t> decodeText(std::string_view bytes, CFStringEncoding encoding, char16_t* units) {
    if (bytes.size() > LONGEST) {
        return std::nullopt;
    }
    switch (encoding) {
        case kCFStringEncodingUTF8:
            return decodeUTF8(withoutMark(bytes), units);
        case kCFStringEncodingUTF16:
            return decodeUTF16(bytes, units);
        case kCFStringEncodingUTF32LE:
            return decodeUTF32LE(bytes, units);
        default:
            return decodeBytes(bytes, encoding, units);
    }
}

std::optional<std::size_t> encodeText(std::u16string_view units, CFStringEncoding encoding, char* buffer,
                                      std::size_t capacity) {
    if (units.size() > LONGEST) {
        return std::nullopt;
    }
    if (encoding == kCFStringEncodingUTF8) {
        return encodeUTF8(units, buffer, capacity);
    }
    const icu::LocalUConverterPointer converter = openConverter(encoding);
    if (converter.isNull()) {
        return std::nullopt;
    }
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t count = ucnv_fromUChars(converter.getAlias(), buffer, length32(std::min(capacity, LONGEST)),
                                               units.data(), length32(units.size()), &error);
    return isConverted(error) ? std::optional<std::size_t>(static_cast<std::size_t>(count)) : std::nullopt;
}

}  // namespace cv
