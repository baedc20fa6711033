#pragma once

// UTF-8 to UTF-16 and back, strict as in TextConversion.h.

#include <cstddef>
#include <optional>
#include <string_view>

namespace cv {

/// Writes the units of `bytes` to `units`, which has room for as many as there are bytes, and returns how many they
/// are; nothing when the bytes are not UTF-8. A byte order mark is a character like any other.
std::optional<std::size_t> decodeUTF8(std::string_view bytes, char16_t* units);

/// Writes the UTF-8 of `units` to `bytes`, and returns the number of bytes; nothing when a surrogate is unpaired or the
/// text needs more than `capacity` bytes.
std::optional<std::size_t> encodeUTF8(std::u16string_view units, char* bytes, std::size_t capacity);

}  // namespace cv
