#pragma once

// Strict conversion between bytes and UTF-16 units: all or nothing, never a replacement character and none left out.
// Running out of memory is std::bad_alloc, never a text that does not convert.

#include <CoreFoundation/CFString.h>

#include <cstddef>
#include <optional>
#include <string_view>

namespace cv {

/// Writes the units of `bytes` in `encoding` to `units`, which has room for as many as there are bytes, and returns how
/// many they are; nothing when the bytes are not valid in the encoding, when it is unknown, or when there are more than
/// 2^31 - 1 of them. A leading byte order mark is dropped in UTF-8 and UTF-16; UTF-16 without one is in the processor's
/// order. In UTF-32LE it is a character like any other.
std::optional<std::size_t> decodeText(std::string_view bytes, CFStringEncoding encoding, char16_t* units);

/// Writes `units` in `encoding`, one of UTF-8, ASCII and Mac OS Roman, and returns the number of bytes; nothing when a
/// unit cannot be converted or the text needs more than `capacity` bytes. Writes no terminating NUL.
std::optional<std::size_t> encodeText(std::u16string_view units, CFStringEncoding encoding, char* buffer,
                                      std::size_t capacity);

}  // namespace cv
