#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <limits>
#include <stdexcept>
#include <string>

#include "platform/PropertyList/PropertyList.h"

namespace host {

// JSON that may come from anyone.

/// The document that the text is. Throws Document::exception when it is none, and std::invalid_argument when its arrays
/// and objects are nested so deeply that no program of ours wrote it: to copy it would take more stack than there is.
template <typename Document>
Document parsedJson(const std::string& text) {
    // A value of a property list takes two levels for each of its own, and lies a few levels deep in a document.
    constexpr int MOST_LEVELS = 2 * static_cast<int>(cv::plist::MAX_DEPTH) + 32;
    return Document::parse(text, [](int level, typename Document::parse_event_t /*event*/, Document& /*value*/) {
        if (level > MOST_LEVELS) {
            throw std::invalid_argument("it is nested too deeply");
        }
        return true;
    });
}

/// What is wrong with a JSON text, in the words of the JSON library's exception but without its number.
inline std::string faultText(const std::exception& fault) {
    const std::string what = fault.what();
    const std::size_t end = what.rfind("[json.", 0) == 0 ? what.find("] ") : std::string::npos;
    return end == std::string::npos ? what : what.substr(end + 2);
}

/// Whether the value is a whole number that a Number holds.
template <typename Number, typename Document>
bool isWhole(const Document& value) {
    using Limits = std::numeric_limits<Number>;
    if (value.is_number_unsigned()) {
        return value.template get<std::uint64_t>() <= static_cast<std::uint64_t>(Limits::max());
    }
    if (!value.is_number_integer()) {
        return false;
    }
    const auto number = value.template get<std::int64_t>();
    return number < 0 ? Limits::is_signed && number >= static_cast<std::int64_t>(Limits::min())
                      : static_cast<std::uint64_t>(number) <= static_cast<std::uint64_t>(Limits::max());
}

/// The number that stands under `key`. Throws Document::exception when there is none, and std::invalid_argument when it
/// is not a whole number that a Number holds.
template <typename Number, typename Document>
Number wholeNumberIn(const Document& object, const char* key) {
    const Document& value = object.at(key);
    if (!isWhole<Number>(value)) {
        throw std::invalid_argument(std::string(key) + " is not a whole number in its range");
    }
    return value.template get<Number>();
}

}  // namespace host
