#pragma once

// What the sources of String share; no other file includes this.

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

/// Overwrites with NUL the bytes of a UTF-8 sequence at the end of `bytes` of which the end is missing. Its lead byte
/// is the last byte with both upper bits set, and the number of upper bits set is the sequence's length (7 for FE and
/// FF).
void blankCutSequence(std::string& bytes);
