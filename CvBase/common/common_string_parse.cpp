// Reading numbers.

#include <langinfo.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <type_traits>

#include "CvBase/common/common_string_bytes.h"
#include "CvBase/common/common_string_decimal_point.h"

static_assert(std::numeric_limits<float>::is_iec559, "a double beyond the range of float becomes an infinity");

namespace {

/// The first byte of the decimal separator that strtod reads now; unset when the C library has none. It is the text
/// that localeconv() has too, which may not be called on two threads at once.
checked_value<char> systemDecimalPoint() {
    char const* const text = nl_langinfo(RADIXCHAR);
    return text != nullptr && *text != '\0' ? checked_value<char>(*text) : checked_value<char>();
}

bool isAscii(char c) {
    return static_cast<unsigned char>(c) < 0x80;
}

/// The text with `to` in place of `from`, unless they are the same.
String withSeparator(String const& text, char from, char to) {
    return from == to ? text : text.StripWhiteSpace().ReplaceChar(from, to);
}

/// The ASCII character that a full-width one stands for in a number; any other unit is itself.
unsigned short narrowed(unsigned short unit, char decimalPoint) {
    constexpr unsigned short FULL_WIDTH_ZERO = 0xFF10, FULL_WIDTH_NINE = 0xFF19;
    constexpr unsigned short FULL_WIDTH_STOP = 0xFF0E, IDEOGRAPHIC_STOP = 0x3002;
    constexpr unsigned short FULL_WIDTH_HYPHEN = 0xFF0D, MINUS_SIGN = 0x2212;
    if (unit >= FULL_WIDTH_ZERO && unit <= FULL_WIDTH_NINE) {
        return static_cast<unsigned short>(unit - FULL_WIDTH_ZERO + '0');
    }
    switch (unit) {
        case FULL_WIDTH_STOP:
        case IDEOGRAPHIC_STOP:
            return static_cast<unsigned char>(decimalPoint);
        case FULL_WIDTH_HYPHEN:
        case MINUS_SIGN:
            return '-';
        default:
            return unit;
    }
}

/// The text as strtod expects it: the system's decimal point for every separator, ASCII for full-width characters, no
/// white space at the ends. Empty when it has bytes beyond ASCII and is not UTF-8.
String normalizeNumberString(String const& text) {
    if (text.IsEmpty()) {
        return text;
    }
    String normalized(text);
    const checked_value<char> decimalPoint = systemDecimalPoint();
    if (decimalPoint.IsSet()) {
        for (char const separator : {'.', ',', g_chDecimalPoint}) {
            normalized = withSeparator(normalized, separator, decimalPoint.Value());
        }
    }
    const std::string_view bytes = bytesOf(normalized);
    if (std::all_of(bytes.begin(), bytes.end(), isAscii)) {
        return normalized;
    }
    const shared_array<unsigned short> units = normalized.Unicode();
    if (units.get() == nullptr) {
        return String("");
    }
    for (std::size_t i = 0; units[i] != 0; ++i) {
        units[i] = narrowed(units[i], decimalPoint.ValueOr('.'));
    }
    return String(units.get());
}

/// The value of a digit in `base`, -1 when `c` is none.
int digitValue(char c, unsigned int base) {
    const int byte = static_cast<signed char>(c);
    if (Char(c).IsDigit()) {
        const int value = byte - '0';
        return static_cast<unsigned int>(value) < base ? value : -1;
    }
    if (base < 11) {
        return -1;
    }
    const int letters = static_cast<int>(std::min(base - 10, 0x80U));
    for (char const first : {'A', 'a'}) {
        if (byte >= first && byte < first + letters) {
            return byte - first + 10;
        }
    }
    return -1;
}

template <typename T>
struct Scanned {
    T magnitude = 0;
    bool isNegative = false;
};

/// A whole text that is a number: white space, a sign, digits, white space. Unset for any other and when T is too
/// small.
template <typename T>
checked_value<Scanned<T>> scanInteger(std::string_view text, unsigned int base, bool takesMinus) {
    const auto isWhiteSpace = [](char c) { return Char(c).IsWhiteSpace(); };
    auto p = std::find_if_not(text.begin(), text.end(), isWhiteSpace);
    Scanned<T> number;
    if (p != text.end() && (*p == '+' || (*p == '-' && takesMinus))) {
        number.isNegative = *p++ == '-';
    }
    const auto firstDigit = p;
    for (int digit; p != text.end() && (digit = digitValue(*p, base)) >= 0; ++p) {
        if (__builtin_mul_overflow(number.magnitude, base, &number.magnitude) ||
            __builtin_add_overflow(number.magnitude, digit, &number.magnitude)) {
            return {};
        }
    }
    const bool isNumber = p != firstDigit && std::all_of(p, text.end(), isWhiteSpace);
    return isNumber ? checked_value<Scanned<T>>(number) : checked_value<Scanned<T>>();
}

/// Reads the text as a number of at most these magnitudes and returns it in an R, which may keep its lower bits only.
/// Only a signed R takes a '-'.
template <typename R, typename T>
R readInteger(String const& text, unsigned int base, T mostPositive, T mostNegative, bool* ok) {
    checked_value<Scanned<T>> number;
    // Normalising leaves the bytes of a number alone; so most texts are read where they are.
    if (g_chDecimalPoint == '.' || g_chDecimalPoint == ',') {
        const std::string_view bytes = bytesOf(text);
        if (!bytes.empty() && !Char(bytes.front()).IsWhiteSpace() && !Char(bytes.back()).IsWhiteSpace()) {
            number = scanInteger<T>(bytes, base, std::is_signed_v<R>);
        }
    }
    if (!number.IsSet()) {
        number = scanInteger<T>(bytesOf(normalizeNumberString(text)), base, std::is_signed_v<R>);
    }
    const auto [magnitude, isNegative] = number.Value();
    const bool isInRange = number.IsSet() && magnitude <= (isNegative ? mostNegative : mostPositive);
    if (ok != nullptr) {
        *ok = isInRange;
    }
    return isInRange ? static_cast<R>(isNegative ? T(0) - magnitude : magnitude) : R(0);
}

/// Whether normalizeNumberString gives the text as it is, seen without making it: an ASCII text in which '.' is the
/// only separator, and the system's too.
bool isNormal(String const& text) {
    const std::string_view bytes = bytesOf(text);
    const auto isKept = [](char c) {
        return isAscii(c) && c != '\0' && c != ',' && (c != g_chDecimalPoint || c == '.');
    };
    return !Char(bytes.front()).IsWhiteSpace() && !Char(bytes.back()).IsWhiteSpace() &&
           std::all_of(bytes.begin(), bytes.end(), isKept) && systemDecimalPoint() == '.';
}

}  // namespace

short String::ToShort(bool* ok, unsigned int base) const {
    return readInteger<short, unsigned short>(*this, base, SHRT_MAX, USHRT_MAX, ok);
}

unsigned short String::ToUShort(bool* ok, unsigned int base) const {
    return readInteger<unsigned short, unsigned short>(*this, base, USHRT_MAX, 0, ok);
}

int String::ToInt(bool* ok, unsigned int base) const {
    return readInteger<int, unsigned int>(*this, base, INT_MAX, 0U - static_cast<unsigned int>(INT_MIN), ok);
}

unsigned int String::ToUInt(bool* ok, unsigned int base) const {
    return readInteger<unsigned int, unsigned int>(*this, base, UINT_MAX, 0, ok);
}

long long String::ToInt64(bool* ok, unsigned int base) const {
    return readInteger<std::int32_t, unsigned long long>(*this, base, UINT_MAX, 0, ok);
}

unsigned long long String::ToUInt64(bool* ok, unsigned int base) const {
    return readInteger<unsigned long long, unsigned long long>(*this, base, ULLONG_MAX, 0, ok);
}

double String::ToDouble(bool* ok) const {
    bool isNumber = false;
    double value = 0.0;
    if (!IsEmpty()) {
        const String normalized = isNormal(*this) ? *this : normalizeNumberString(*this);
        char* end = nullptr;
        value = std::strtod(normalized.CStr(), &end);
        isNumber = end == normalized.CStr() + normalized.Length();
    }
    if (ok != nullptr) {
        *ok = isNumber;
    }
    return isNumber ? value : 0.0;
}

float String::ToFloat(bool* ok) const {
    return static_cast<float>(ToDouble(ok));
}
