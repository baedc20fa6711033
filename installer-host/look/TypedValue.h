#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "platform/PropertyList/Value.h"

namespace host {

/// A value of a property list as data: {"type": TYPE, "value": VALUE}. TYPE is one of string, integer, real, boolean,
/// date, data, array, dictionary and uid. A date is text in ISO 8601, data is hexadecimal text, and a real that
/// JSON cannot write is text ("nan", "inf", "-inf"); arrays and dictionaries hold values of this kind again.
///
/// Where that does not tell all, there is a third key: "seconds" since 1 January 2001 of a date with a fraction or
/// outside the years 1000 to 9999, and "single": true of a real that is stored in 32 bits. So two values are equal
/// when their data are, but for the bits of what is not a number.
using TypedValue = nlohmann::json;

TypedValue typedValue(const cv::plist::Value& value);

/// The value that these data tell. Throws std::invalid_argument, or an exception of the JSON library, when they are not
/// data of a value.
cv::plist::Value plistValue(const TypedValue& data);

/// Two hexadecimal digits for each byte.
std::string hexText(std::string_view bytes);

/// The bytes that hexadecimal digits tell. Throws std::invalid_argument for another text.
std::string bytesOfHex(std::string_view text);

}  // namespace host
