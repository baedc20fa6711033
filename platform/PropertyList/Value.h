#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace cv::plist {

struct Value;

using Array = std::vector<Value>;
using Dictionary = std::map<std::string, Value, std::less<>>;  ///< its keys are UTF-8

/// An integer from -2^63 to 2^64 - 1.
struct Integer {
    std::uint64_t bits;
    bool isNegative;  ///< the bits are those of a negative 64-bit number; otherwise they are the number
};

struct Real {
    double value;
    bool isSingle;  ///< it is stored in 32 bits
};

struct Date {
    double seconds;  ///< since 1 January 2001 UTC
};

struct Data {
    std::string bytes;
};

/// What key-value archives refer to their objects with.
struct Uid {
    std::uint64_t number;
};

/// A property list, or a part of one. Text is UTF-8 and may hold NULs.
struct Value {
    std::variant<bool, Integer, Real, Date, Data, std::string, Uid, Array, Dictionary> content;

    /// The value as a dictionary; null when it is something else.
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&content); }
    Dictionary* dictionary() { return std::get_if<Dictionary>(&content); }

    /// The value as text; null when it is something else.
    const std::string* text() const { return std::get_if<std::string>(&content); }
};

}  // namespace cv::plist
