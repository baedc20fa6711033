#pragma once

// The texts in which XML property lists keep values that are not text.

#include <string>
#include <string_view>

#include "platform/PropertyList/Value.h"

namespace cv::plist {

/// Each reads the text of an element, white space around it or, for data, anywhere in it, and throws Refusal for any
/// other text than a value's. None depends on the locale.

/// Decimal or, after 0x, hexadecimal digits, with or without a sign.
Integer integerFrom(std::string_view text);

/// A decimal fraction, with or without an exponent, or a spelling of infinity or of no number.
Real realFrom(std::string_view text);

/// YYYY-MM-DDTHH:MM:SSZ with a day and a time that there are, by the Gregorian calendar in every year. Years before 1
/// and after 9999 are longer.
Date dateFrom(std::string_view text);

/// Base64 with its padding.
std::string bytesFrom(std::string_view text);

/// Whether a property list may have this text between elements.
bool isWhiteSpace(std::string_view text);

}  // namespace cv::plist
