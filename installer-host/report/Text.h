#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace host {

/// The text in double quotes; quotes, backslashes, control characters and bytes that are not UTF-8 are escaped.
std::string inQuotes(std::string_view text);

/// The same without the quotes around it: fit for one line of a report.
std::string escaped(std::string_view text);

/// The same for text in which quotes and backslashes are not escaped: those of this program's own sentences.
std::string visible(std::string_view text);

/// "0x" and `digits` hexadecimal digits.
std::string hexNumber(std::uint32_t value, int digits);

/// "1 key", "2 keys".
std::string counted(std::size_t count, const char* one, const char* many);

/// "0.012 s".
std::string secondsText(std::chrono::milliseconds time);

}  // namespace host
