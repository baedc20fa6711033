#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/PropertyList/Value.h"

namespace cv::plist {

/// The largest file that is read, in bytes, and the deepest nesting of arrays and dictionaries.
constexpr std::size_t MAX_FILE_SIZE = 64U << 20;
constexpr unsigned MAX_DEPTH = 512;

/// The result of reading.
struct Parsed {
    enum class Verdict {
        Good,
        Malformed,   ///< the bytes are not a property list
        Unsupported  ///< they are or may be one, but it cannot be read and written again without loss, or is too large
    };
    std::optional<Value> root;  ///< there when `verdict` is Good
    Verdict verdict = Verdict::Good;
    std::string reason;  ///< what is wrong, to end a sentence with
};

/// Reads a binary or an XML property list. Safe for any bytes: they may come from a damaged or hostile file. What it
/// takes is bounded, whatever the bytes are.
///
/// Throws std::bad_alloc, and nothing else; running out of memory is never taken for a fault of the bytes.
Parsed parse(std::string_view bytes);

/// The property list in its binary form. The same value always gives the same bytes.
///
/// Throws std::bad_alloc; std::length_error when arrays and dictionaries are nested more deeply than MAX_DEPTH; and
/// std::invalid_argument when a text is not UTF-8.
std::string toBinary(const Value& root);

}  // namespace cv::plist
