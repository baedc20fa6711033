// Reading numbers.
//
// The plain way is to normalise a text and then to scan it. Most texts are nothing but a number, though, and
// normalising leaves those as they are. So each reader first tries the text as it stands, and normalises only when that
// fails: an int takes a tenth of the time then, and a double a third.

#include <langinfo.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <type_traits>

#include "CvBase/common/string/common_string_bytes.h"
#include "CvBase/common/string/common_string_decimal_point.h"

static_assert(std::numeric_limits<float>::is_iec559, "a double beyond the range of float becomes an infinity");

namespace {

constexpr unsigned int LONGEST_PLAIN = 100000;  // bytes, of which no more units of UTF-16 can come

/// The first byte of the decimal separator that strtod reads now; unset when the C library has none. It is the text
/// that localeconv() has too, which may not be called on two threads at once.
checked_value<char> systemDecimalPoint() {
    const char* const text = nl_langinfo(RADIXCHAR);
    return text != nullptr && *text != '\0' ? checked_value<char>(*text) : checked_value<char>();
}

/// Whether no character of a number can be the user's decimal separator as well.
bool isUsersPointUsual() {
    return g_chDecimalPoint == '.' || g_chDecimalPoint == ',';
}

bool isAscii(char c) {
    return static_cast<unsigned char>(c) < 0x80;
}

/// The text with `to` in place of `from`, unless they are the same.
String withSeparator(const String& text, char from, char to) {
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
String normalizeNumberString(const String& text) {
    if (text.IsEmpty()) {
        return text;
    }
    String normalized(text);
    const checked_value<char> decimalPoint = systemDecimalPoint();
    if (decimalPoint.IsSet()) {
        for (const char separator : {'.', ',', g_chDecimalPoint}) {
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
    const int byte = static_cast<unsigned char>(c);
    const unsigned int decimal = static_cast<unsigned int>(byte) - '0';
    if (decimal < 10) {
        return decimal < base ? static_cast<int>(decimal) : -1;
    }
    if (base < 11 || !isAscii(c)) {
        return -1;
    }
    const int letters = static_cast<int>(std::min(base - 10, 0x80U));
    for (const char first : {'A', 'a'}) {
        if (byte >= first && byte < first + letters) {
            return byte - first + 10;
        }
    }
    return -1;
}

/// A sign, if there is one that the type takes, and digits.
template <typename T>
struct Scanned {
    T magnitude = 0;
    bool isNegative = false;
    bool isNumber = false;      ///< there are digits, and T is large enough
    const char* end = nullptr;  ///< after the last digit
};

/// Scans a number at `p`, before the NUL that ends the text. Compiled in place, so that base 10 has a loop with a
/// constant base: an int takes a tenth less time than in the loop for every base, and a quarter less than with a call.
template <typename T>
[[gnu::always_inline]] inline Scanned<T> scanInteger(const char* p, unsigned int base, bool takesMinus) {
    Scanned<T> number;
    number.isNegative = takesMinus && *p == '-';
    if (number.isNegative || *p == '+') {
        ++p;
    }
    const char* const firstDigit = p;
    for (int digit; (digit = digitValue(*p, base)) >= 0; ++p) {
        if (__builtin_mul_overflow(number.magnitude, base, &number.magnitude) ||
            __builtin_add_overflow(number.magnitude, digit, &number.magnitude)) {
            return number;
        }
    }
    number.isNumber = p != firstDigit;
    number.end = p;
    return number;
}

/// Scans a whole text, normalised, that is a number with white space at its ends.
template <typename T>
[[gnu::noinline]] Scanned<T> scanNormalized(const String& text, unsigned int base, bool takesMinus) {
    const auto isWhiteSpace = [](char c) { return Char(c).IsWhiteSpace(); };
    const String normalized = normalizeNumberString(text);
    const char* const end = normalized.CStr() + normalized.Length();
    Scanned<T> number = scanInteger<T>(std::find_if_not(normalized.CStr(), end, isWhiteSpace), base, takesMinus);
    number.isNumber = number.isNumber && std::all_of(number.end, end, isWhiteSpace);
    return number;
}

/// Reads the text as a number of at most these magnitudes and returns it in an R, which may keep its lower bits only.
/// Only a signed R takes a '-'.
template <typename R, typename T>
R readInteger(const String& text, unsigned int base, T mostPositive, T mostNegative, bool* ok) {
    constexpr bool TAKES_MINUS = std::is_signed_v<R>;
    Scanned<T> number =
        base == 10 ? scanInteger<T>(text.CStr(), 10, TAKES_MINUS) : scanInteger<T>(text.CStr(), base, TAKES_MINUS);
    if (!number.isNumber || number.end != text.CStr() + text.Length() || !isUsersPointUsual()) {
        number = scanNormalized<T>(text, base, TAKES_MINUS);
    }
    const bool isInRange = number.isNumber && number.magnitude <= (number.isNegative ? mostNegative : mostPositive);
    if (ok != nullptr) {
        *ok = isInRange;
    }
    return isInRange ? static_cast<R>(number.isNegative ? T(0) - number.magnitude : number.magnitude) : R(0);
}

/// The number that strtod makes of the whole text; unset when it leaves something over.
checked_value<double> readDouble(const String& text) {
    char* end = nullptr;
    const double value = std::strtod(text.CStr(), &end);
    return end == text.CStr() + text.Length() ? checked_value<double>(value) : checked_value<double>();
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
    // A text that strtod takes whole is one that normalising would not change, with two exceptions: one with white
    // space in front, which strtod passes over, and one with a separator beyond ASCII that is too long to become
    // UTF-16.
    const char first = CStr()[0];
    const bool isPlain =
        isAscii(first) && !Char(first).IsWhiteSpace() && Length() < LONGEST_PLAIN && isUsersPointUsual();
    checked_value<double> value = isPlain && !IsEmpty() ? readDouble(*this) : checked_value<double>();
    if (!value.IsSet() && !IsEmpty()) {
        value = readDouble(normalizeNumberString(*this));
    }
    if (ok != nullptr) {
        *ok = value.IsSet();
    }
    return value.Value();
}

float String::ToFloat(bool* ok) const {
    return static_cast<float>(ToDouble(ok));
}
