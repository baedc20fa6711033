#pragma once

// What the sources of String share; no other file includes this.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "CvBase/common/common_string.h"

/// All bytes of the text, embedded NULs included; they live as long as the text.
inline std::string_view bytesOf(const String& text) {
    return {text.CStr(), text.Length()};
}

/// The bytes before the first NUL.
inline std::string_view viewOf(std::string_view bytes) {
    return bytes.substr(0, bytes.find('\0'));
}

/// Copies the bytes to `to`; returns the end of the copy.
inline char* copyBytes(std::string_view bytes, char* to) {
    if (bytes.size() == 1) {  // such as a separator; calling the C library would take most of the time
        *to = bytes.front();
        return to + 1;
    }
    return std::copy(bytes.begin(), bytes.end(), to);
}

/// So many NUL bytes, to be overwritten. Throws std::length_error for more than a text can hold.
inline std::string nulBytes(std::uint64_t size) {
    return std::string(static_cast<std::size_t>(std::min<std::uint64_t>(size, std::string::npos)), '\0');
}

/// Overwrites with NUL the bytes of a UTF-8 sequence at the end of `bytes` of which the end is missing. Its lead byte
/// is the last byte with both upper bits set, and the number of upper bits set is the sequence's length (7 for FE and
/// FF).
void blankCutSequence(std::string& bytes);
