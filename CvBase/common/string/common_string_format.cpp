// Numbers as text, and filling the placeholders of templates.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>

#include "CvBase/common/string/common_string_bytes.h"
#include "CvBase/common/string/common_string_decimal_point.h"

namespace {

using Width = checked_value<unsigned int>;

constexpr unsigned int PLACEHOLDER_LENGTH = 2;  // '%' and a digit

/// `digits` with zeros in front up to `width`.
std::string padded(std::string_view digits, const Width& width) {
    std::string text;
    if (width.Value() > digits.size()) {
        text.reserve(width.Value() + std::size_t{1});  // the caller may put a sign in front
        text.assign(width.Value() - digits.size(), '0');
    }
    return text.append(digits);
}

unsigned int knownBase(unsigned int base) {
    return base >= 2 && base <= 36 ? base : 10;
}

std::string formatUnsigned(std::uint32_t value, unsigned int base, const Width& width) {
    static const char DIGITS[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    base = knownBase(base);
    std::array<char, 32> digits;
    std::size_t first = digits.size();
    do {
        digits[--first] = DIGITS[value % base];
        value /= base;
    } while (value != 0);
    return padded({digits.data() + first, digits.size() - first}, width);
}

std::string formatInteger(std::int32_t value, unsigned int base, const Width& width) {
    if (value >= 0) {
        return formatUnsigned(static_cast<std::uint32_t>(value), base, width);
    }
    const std::uint32_t magnitude = 0U - static_cast<std::uint32_t>(value);
    if (value != INT32_MIN) {
        return formatUnsigned(magnitude, base, width).insert(0, 1, '-');
    }
    // The least value's magnitude has no positive counterpart: its last digit is rendered, and padded, on its own.
    base = knownBase(base);
    return formatInteger(-static_cast<std::int32_t>(magnitude / base), base, width) +
           formatUnsigned(magnitude % base, base, width);
}

std::string formatUnsigned64(unsigned long long value, unsigned int base, const Width& width) {
    std::array<char, 4096> digits;
    const int length = base == 16 ? std::snprintf(digits.data(), digits.size(), "%llX", value)
                                  : std::snprintf(digits.data(), digits.size(), "%llu", value);
    return padded({digits.data(), static_cast<std::size_t>(length)}, width);
}

std::string formatInteger64(long long value, unsigned int base, const Width& width) {
    const auto bits = static_cast<unsigned long long>(value);
    if (value >= 0) {
        return formatUnsigned64(bits, base, width);
    }
    // Without a width, hexadecimal is the bare two's complement; with one it has a sign as well.
    std::string text = formatUnsigned64(base == 16 ? bits : 0 - bits, base, width);
    return base != 16 || width.IsSet() ? text.insert(0, 1, '-') : text;
}

String formatFloating(double value, unsigned int precision, const checked_value<unsigned int>& format) {
    const unsigned int wanted = format.Value();
    const bool isKnown = wanted != 0 && wanted < 0x80 && std::strchr("fFeEgG", static_cast<char>(wanted)) != nullptr;
    const char conversion[] = {'%', '.', '*', isKnown ? static_cast<char>(wanted) : 'f', '\0'};
    const int decimals = precision == String::NO_PRECISION ? -1 : static_cast<int>(std::min(precision, 99U));
    std::array<char, 1024> buffer{};
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    static_cast<void>(std::snprintf(buffer.data(), buffer.size(), conversion, decimals, value));  // -1: no precision
#pragma GCC diagnostic pop
    return String(buffer.data());
}

/// The text with the user's decimal separator in place of `separator`, unless they are the same.
String withUsersDecimalPoint(const String& text, char separator) {
    return g_chDecimalPoint == separator ? text : text.StripWhiteSpace().ReplaceChar(separator, g_chDecimalPoint);
}

/// Where the template's next placeholder begins.
checked_value<unsigned int> findPlaceholder(std::string_view text) {
    checked_value<unsigned int> found;
    const std::string_view starts = text.substr(0, text.empty() ? 0 : text.size() - 1);  // a digit has to follow
    for (std::size_t i = starts.find('%'); i != std::string_view::npos; i = starts.find('%', i + 1)) {
        if (Char(text[i + 1]).IsDigit() && (!found.IsSet() || text[i + 1] < text[found.Value() + 1])) {
            found = static_cast<unsigned int>(i);
        }
    }
    return found;
}

}  // namespace

String String::Number(int value, unsigned int base, const checked_value<unsigned int>& width) {
    return fromBytes(formatInteger(value, base, width));
}

String String::Number(long value, unsigned int base, const checked_value<unsigned int>& width) {
    return fromBytes(formatInteger(static_cast<std::int32_t>(value), base, width));
}

String String::Number(unsigned int value, unsigned int base, const checked_value<unsigned int>& width) {
    return fromBytes(formatUnsigned(value, base, width));
}

String String::Number(unsigned long value, unsigned int base, const checked_value<unsigned int>& width) {
    return fromBytes(formatUnsigned(static_cast<std::uint32_t>(value), base, width));
}

String String::Number(long long value, unsigned int base, const checked_value<unsigned int>& width) {
    return fromBytes(formatInteger64(value, base, width));
}

String String::Number(unsigned long long value, unsigned int base, const checked_value<unsigned int>& width) {
    return fromBytes(formatUnsigned64(value, base, width));
}

String String::Number(double value, unsigned int precision, const checked_value<unsigned int>& format) {
    // Whichever separator the C library has put in, the user's is what remains.
    return withUsersDecimalPoint(withUsersDecimalPoint(formatFloating(value, precision, format), '.'), ',');
}

String String::Number(float value, unsigned int precision, const checked_value<unsigned int>& format) {
    return Number(double{value}, precision, format);
}

String String::Arg(const String& value) const {
    const checked_value<unsigned int> placeholder = findPlaceholder(bytesOf(*this));
    if (!placeholder.IsSet()) {
        return *this + value;
    }
    const std::string_view bytes = bytesOf(*this);
    if (bytes.size() == PLACEHOLDER_LENGTH && !value.IsEmpty()) {
        return value;
    }
    std::string filled;
    filled.reserve(bytes.size() - PLACEHOLDER_LENGTH + value.Length());
    filled.append(bytes, 0, placeholder.Value());
    filled.append(bytesOf(value));
    filled.append(bytes, placeholder.Value() + PLACEHOLDER_LENGTH);
    return fromBytes(std::move(filled));
}

String String::Arg(const char* s) const {
    return Arg(String(s));
}

String String::Arg(char c) const {
    return Arg(String(c));
}

String String::Arg(const Char& c) const {
    return Arg(String(c));
}

String String::Arg(int v, unsigned int base, const checked_value<unsigned int>& width) const {
    return Arg(Number(v, base, width));
}

String String::Arg(long v, unsigned int base, const checked_value<unsigned int>& width) const {
    return Arg(Number(v, base, width));
}

String String::Arg(short v, unsigned int base, const checked_value<unsigned int>& width) const {
    return Arg(Number(int{v}, base, width));
}

String String::Arg(unsigned short v, unsigned int base, const checked_value<unsigned int>& width) const {
    return Arg(Number(int{v}, base, width));
}

String String::Arg(unsigned int v, unsigned int base, const checked_value<unsigned int>& width) const {
    return Arg(Number(v, base, width));
}

String String::Arg(unsigned long v, unsigned int base, const checked_value<unsigned int>& width) const {
    return Arg(Number(v, base, width));
}

String String::Arg(long long v, unsigned int base, const checked_value<unsigned int>& width) const {
    return Arg(Number(v, base, width));
}

String String::Arg(unsigned long long v, unsigned int base, const checked_value<unsigned int>& width) const {
    return Arg(Number(v, base, width));
}

String String::Arg(double v, unsigned int precision, const checked_value<unsigned int>& format) const {
    return Arg(Number(v, precision, format));
}

String String::Arg(float v, unsigned int precision, const checked_value<unsigned int>& format) const {
    return Arg(Number(v, precision, format));
}
