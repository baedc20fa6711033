#pragma once

#include <ostream>

#include "CvBase/common/common_checked_types.h"
#include "CvBase/common/common_std.h"
#include "CvBase/common/common_string.h"
#include "tests/support/Test.h"

namespace test {

/// What a text holds; without a value when it is null.
using MaybeBytes = std::optional<std::string>;
inline const MaybeBytes NONE;

/// The bytes of the text; without a value when it is null. Checks the NUL behind them.
inline MaybeBytes bytesOf(const String& text) {
    EXPECT_EQ(text.CStr()[text.Length()], '\0');
    return text.IsNull() ? std::nullopt : MaybeBytes(std::in_place, text.CStr(), text.Length());
}

/// The bytes of the text, none when it is null.
inline std::string str(const String& text) {
    return bytesOf(text).value_or("");
}

/// A text of these bytes, NUL bytes too; null without a value.
inline String makeText(std::optional<std::string_view> bytes) {
    return bytes ? StringFrom(*bytes) : String();
}

}  // namespace test

/// How googletest shows a text and an optional value.
inline void PrintTo(const String& text, std::ostream* out) {
    *out << test::PrintToString(test::bytesOf(text));
}
template <typename T>
void PrintTo(const checked_value<T>& value, std::ostream* out) {
    *out << (value.IsSet() ? test::PrintToString(value.Value()) : "(unset)");
}
