#pragma once

#include <CoreFoundation/CFString.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/CoreFoundation/Object.h"

/// Exactly the UTF-16 units that it was made from: unpaired surrogates, U+0000 and a leading U+FEFF are kept, and
/// strings are equal when their units are, however those would be drawn.
struct __CFString : objc_object {
    /// An immortal string over units that live as long as the process.
    constexpr explicit __CFString(std::u16string_view text) noexcept;

    /// A new string with a copy of the units. Throws std::bad_alloc.
    static const __CFString* make(std::u16string_view text, std::uint32_t references = 1);

    /// A new string of the text that `bytes` are in `encoding`, as decodeText() has it; null when they are not. Throws
    /// std::bad_alloc.
    static const __CFString* decode(std::string_view bytes, CFStringEncoding encoding, std::uint32_t references = 1);

    constexpr std::u16string_view units() const noexcept { return units_; }
    bool operator==(const __CFString& other) const noexcept { return units_ == other.units_; }
    CFHashCode hash() const noexcept { return std::hash<std::u16string_view>()(units_); }

private:
    __CFString(std::u16string_view text, std::uint32_t references) noexcept;

    std::u16string_view units_;
};

namespace cv {

extern const objc_class STRING_CLASS;

/// The text in UTF-8; nothing when it is null or no string, or has an unpaired surrogate. Throws std::bad_alloc.
std::optional<std::string> utf8Of(CFTypeRef text);

/// A new string of the text in UTF-8, a leading U+FEFF included; null when it is not UTF-8. Throws std::bad_alloc.
CFStringRef createString(std::string_view utf8);

}  // namespace cv

constexpr __CFString::__CFString(std::u16string_view text) noexcept
    : objc_object(cv::STRING_CLASS, IMMORTAL), units_(text) {}
