// Numbers as text, and filling the placeholders of templates.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "CvBase/common/string/common_string_bytes.h"
#include "CvBase/common/string/common_string_decimal_point.h"

namespace {

using Width = checked_value<unsigned int>;

constexpr unsigned int PLACEHOLDER_LENGTH = 2;  // '%' and a digit

constexpr char DIGITS[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

/// The two decimal digits of every number below 100: a division for each pair of digits takes half the time of one for
/// each digit.
constexpr std::array<char, 200> DIGIT_PAIRS = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        pairs[i] = static_cast<char>('0' + (i % 2 == 0 ? i / 20 : i / 2 % 10));
    }
    return pairs;
}();

/// Writes the decimal digits of `value` in front of `end` and returns where they begin.
template <typename Unsigned>
char* writeDecimal(Unsigned value, char* end) {
    while (value >= 100) {
        end -= 2;
        std::memcpy(end, &DIGIT_PAIRS[static_cast<std::size_t>(value % 100) * 2], 2);
        value /= 100;
    }
    if (value >= 10) {
        end -= 2;
        std::memcpy(end, &DIGIT_PAIRS[static_cast<std::size_t>(value) * 2], 2);
        return end;
    }
    *--end = static_cast<char>('0' + value);
    return end;
}

/// The same in a base from 2 to 36.
template <typename Unsigned>
char* writeDigits(Unsigned value, unsigned int base, char* end) {
    if (base == 10) {
        return writeDecimal(value, end);
    }
    do {
        *--end = DIGITS[value % base];
        value /= base;
    } while (value != 0);
    return end;
}

unsigned int knownBase(unsigned int base) {
    return base >= 2 && base <= 36 ? base : 10;
}

/// A number's text: a minus sign or none, zeros up to a width, the digits. All but the widest take no memory.
class NumberText {
public:
    /// The rules of 32 bits.
    NumberText(std::uint32_t value, unsigned int base, const Width& width) {
        write(value, knownBase(base), width, false);
    }
    NumberText(std::int32_t value, unsigned int base, const Width& width) {
        const std::uint32_t bits = static_cast<std::uint32_t>(value);
        if (value == INT32_MIN && width.IsSet()) {
            writeLeast(knownBase(base), width);
        } else {
            write(value < 0 ? 0 - bits : bits, knownBase(base), width, value < 0);
        }
    }

    /// The rules of 64 bits: all is decimal but base 16.
    NumberText(unsigned long long value, unsigned int base, const Width& width) {
        write(value, base == 16 ? 16 : 10, width, false);
    }
    NumberText(long long value, unsigned int base, const Width& width) {
        const auto bits = static_cast<unsigned long long>(value);
        if (base == 16) {
            // Without a width, it is the bare two's complement; with one it has a sign as well.
            write(bits, 16, width, value < 0 && width.IsSet());
        } else {
            write(value < 0 ? 0 - bits : bits, 10, width, value < 0);
        }
    }

    NumberText(const NumberText&) = delete;
    NumberText& operator=(const NumberText&) = delete;
    ~NumberText() = default;

    [[nodiscard]] std::string_view Bytes() const { return bytes_; }

private:
    template <typename Unsigned>
    void write(Unsigned magnitude, unsigned int base, const Width& width, bool isNegative) {
        char* const end = buffer_.data() + buffer_.size();
        char* first = writeDigits(magnitude, base, end);
        const std::size_t wanted = width.Value();
        if (wanted >= buffer_.size()) {
            writeWide({first, static_cast<std::size_t>(end - first)}, wanted, isNegative);
            return;
        }
        while (static_cast<std::size_t>(end - first) < wanted) {
            *--first = '0';
        }
        if (isNegative) {
            *--first = '-';
        }
        bytes_ = {first, static_cast<std::size_t>(end - first)};
    }

    /// What does not fit the buffer.
    void writeWide(std::string_view digits, std::size_t width, bool isNegative) {
        wide_.reserve(width + 1);
        wide_.append(isNegative ? 1 : 0, '-').append(width - digits.size(), '0').append(digits);
        bytes_ = wide_;
    }

    /// The magnitude of the least value has no positive counterpart: its last digit is rendered, and padded, on its
    /// own.
    void writeLeast(unsigned int base, const Width& width) {
        constexpr std::uint32_t MAGNITUDE = 0x80000000;
        const NumberText others(-static_cast<std::int32_t>(MAGNITUDE / base), base, width);
        const NumberText last(MAGNITUDE % base, base, width);
        wide_.append(others.Bytes()).append(last.Bytes());
        bytes_ = wide_;
    }

    std::array<char, 40> buffer_;  // the longest: 32 binary digits and a sign
    std::string wide_;
    std::string_view bytes_;
};

/// A floating-point number's text.
class FloatingText {
public:
    FloatingText(double value, unsigned int precision, const checked_value<unsigned int>& format) {
        const unsigned int wanted = format.Value();
        const bool isKnown =
            wanted != 0 && wanted < 0x80 && std::strchr("fFeEgG", static_cast<char>(wanted)) != nullptr;
        const char conversion[] = {'%', '.', '*', isKnown ? static_cast<char>(wanted) : 'f', '\0'};
        const int decimals = precision == String::NO_PRECISION ? -1 : static_cast<int>(std::min(precision, 99U));
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        // -1: no precision
        const int size = std::snprintf(buffer_.data(), buffer_.size(), conversion, decimals, value);
#pragma GCC diagnostic pop
        size_ = static_cast<std::size_t>(std::max(size, 0));
        // Whichever separator the C library has put in, the user's is what remains.
        std::replace_if(
            buffer_.data(), buffer_.data() + size_, [](char c) { return c == '.' || c == ','; }, g_chDecimalPoint);
    }

    [[nodiscard]] std::string_view Bytes() const {
        return {buffer_.data(), size_};
    }

private:
    std::array<char, 1024> buffer_;  // the longest, -DBL_MAX with 99 decimals, has 410 bytes
    std::size_t size_;
};

/// Where the next placeholder of `pattern` begins; npos when it has none.
std::size_t findPlaceholder(std::string_view pattern) {
    std::size_t found = std::string_view::npos;
    const std::string_view starts = pattern.substr(0, pattern.empty() ? 0 : pattern.size() - 1);  // a digit follows
    for (std::size_t i = starts.find('%'); i != std::string_view::npos; i = starts.find('%', i + 1)) {
        if (Char(pattern[i + 1]).IsDigit() &&
            (found == std::string_view::npos || pattern[i + 1] < pattern[found + 1])) {
            found = i;
        }
    }
    return found;
}

/// A new text: `pattern` with `value` in place of the placeholder at `found`, or at the end for npos.
std::string* newFilled(std::string_view pattern, std::size_t found, std::string_view value) {
    const std::string_view head = pattern.substr(0, found);
    const std::string_view tail =
        found != std::string_view::npos ? pattern.substr(found + PLACEHOLDER_LENGTH) : std::string_view();
    // Blanks to write over cost less than three calls of append().
    auto text = std::make_unique<std::string>(head.size() + value.size() + tail.size(), ' ');
    char* end = text->data();
    for (const std::string_view piece : {head, value, tail}) {
        end += piece.copy(end, piece.size());
    }
    return text.release();
}

/// What Arg() gives for a value that is not empty and no String: always a text of its own.
std::string* newFilled(const String& pattern, std::string_view value) {
    const std::string_view bytes = bytesOf(pattern);
    return newFilled(bytes, findPlaceholder(bytes), value);
}

}  // namespace

String String::Number(int value, unsigned int base, const checked_value<unsigned int>& width) {
    return String(new std::string(NumberText(value, base, width).Bytes()));
}

String String::Number(long value, unsigned int base, const checked_value<unsigned int>& width) {
    return String(new std::string(NumberText(static_cast<std::int32_t>(value), base, width).Bytes()));
}

String String::Number(unsigned int value, unsigned int base, const checked_value<unsigned int>& width) {
    return String(new std::string(NumberText(value, base, width).Bytes()));
}

String String::Number(unsigned long value, unsigned int base, const checked_value<unsigned int>& width) {
    return String(new std::string(NumberText(static_cast<std::uint32_t>(value), base, width).Bytes()));
}

String String::Number(long long value, unsigned int base, const checked_value<unsigned int>& width) {
    return String(new std::string(NumberText(value, base, width).Bytes()));
}

String String::Number(unsigned long long value, unsigned int base, const checked_value<unsigned int>& width) {
    return String(new std::string(NumberText(value, base, width).Bytes()));
}

String String::Number(double value, unsigned int precision, const checked_value<unsigned int>& format) {
    return String(new std::string(FloatingText(value, precision, format).Bytes()));
}

String String::Number(float value, unsigned int precision, const checked_value<unsigned int>& format) {
    return Number(double{value}, precision, format);
}

String String::Arg(const String& value) const {
    const std::string_view bytes = bytesOf(*this);
    const std::size_t found = findPlaceholder(bytes);
    if (found == std::string_view::npos) {
        return *this + value;
    }
    const bool isValueAlone = bytes.size() == PLACEHOLDER_LENGTH && !value.IsEmpty();
    return isValueAlone ? value : String(newFilled(bytes, found, bytesOf(value)));
}

String String::Arg(const char* s) const {
    return s == nullptr || *s == '\0' ? Arg(String(s)) : String(newFilled(*this, s));
}

String String::Arg(char c) const {
    return String(newFilled(*this, {&c, 1}));
}

String String::Arg(const Char& c) const {
    return Arg(static_cast<char>(c));
}

String String::Arg(int v, unsigned int base, const checked_value<unsigned int>& width) const {
    return String(newFilled(*this, NumberText(v, base, width).Bytes()));
}

String String::Arg(long v, unsigned int base, const checked_value<unsigned int>& width) const {
    return String(newFilled(*this, NumberText(static_cast<std::int32_t>(v), base, width).Bytes()));
}

String String::Arg(short v, unsigned int base, const checked_value<unsigned int>& width) const {
    return String(newFilled(*this, NumberText(int{v}, base, width).Bytes()));
}

String String::Arg(unsigned short v, unsigned int base, const checked_value<unsigned int>& width) const {
    return String(newFilled(*this, NumberText(int{v}, base, width).Bytes()));
}

String String::Arg(unsigned int v, unsigned int base, const checked_value<unsigned int>& width) const {
    return String(newFilled(*this, NumberText(v, base, width).Bytes()));
}

String String::Arg(unsigned long v, unsigned int base, const checked_value<unsigned int>& width) const {
    return String(newFilled(*this, NumberText(static_cast<std::uint32_t>(v), base, width).Bytes()));
}

String String::Arg(long long v, unsigned int base, const checked_value<unsigned int>& width) const {
    return String(newFilled(*this, NumberText(v, base, width).Bytes()));
}

String String::Arg(unsigned long long v, unsigned int base, const checked_value<unsigned int>& width) const {
    return String(newFilled(*this, NumberText(v, base, width).Bytes()));
}

String String::Arg(double v, unsigned int precision, const checked_value<unsigned int>& format) const {
    return String(newFilled(*this, FloatingText(v, precision, format).Bytes()));
}

String String::Arg(float v, unsigned int precision, const checked_value<unsigned int>& format) const {
    return Arg(double{v}, precision, format);
}
