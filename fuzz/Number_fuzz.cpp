// Numbers in text, both ways: what the parsers take, and what Number and Arg make, against the rules in
// common_string.h.

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <limits>
#include <optional>

#include "CvBase/common/common_string.h"
#include "fuzz/Fuzz.h"
#include "fuzz/TextModel.h"
#include "fuzz/UtfModel.h"

namespace {

using fuzz::expectEqual;
using fuzz::TextModel;
using Wide = unsigned __int128;

char systemPoint() {
    return *localeconv()->decimal_point;
}

char userPoint() {
    return String::Number(1.5).CStr()[1];
}

// --- Parsing

/// The text with ASCII digits, minus signs and the system's decimal point.
std::string normalized(TextModel text) {
    for (const char separator : {'.', ',', userPoint()}) {
        if (separator != systemPoint() && !text.bytes.empty()) {
            text = text.stripWhiteSpace().replaceChar(separator, systemPoint());
        }
    }
    if (std::none_of(text.bytes.begin(), text.bytes.end(), [](char c) { return (c & 0x80) != 0; })) {
        return text.bytes;
    }
    std::u32string characters = fuzz::decodeUtf8(text.view()).value_or(U"");
    for (char32_t& c : characters) {
        const bool isDigit = c >= 0xFF10 && c <= 0xFF19;
        const bool isPoint = c == 0xFF0E || c == 0x3002;
        const bool isMinus = c == 0xFF0D || c == 0x2212;
        c = isDigit ? c - 0xFF10 + U'0' : isPoint ? static_cast<char32_t>(systemPoint()) : isMinus ? U'-' : c;
    }
    return fuzz::encodeUtf8(characters);
}

unsigned int digitOf(char c) {
    const std::size_t place = std::string("0123456789abcdefghijklmnopqrstuvwxyz").find(fuzz::lowered({c}));
    return place == std::string::npos ? 99 : static_cast<unsigned int>(place);
}

struct Magnitude {
    bool isNegative;
    Wide value;  ///< grows no more once it is 2^64 or above
};

/// The whole number that the text is; nothing when it is none.
std::optional<Magnitude> wholeNumber(const std::string& text, unsigned int base, bool isSigned) {
    std::string digits = TextModel(text).stripWhiteSpace().bytes;
    const bool isNegative = isSigned && digits[0] == '-';
    digits.erase(0, isNegative || digits[0] == '+' ? 1 : 0);
    Magnitude result{isNegative, 0};
    for (const char c : digits) {
        if (digitOf(c) >= base) {
            return std::nullopt;
        }
        result.value = result.value >> 64 != 0 ? result.value : result.value * base + digitOf(c);
    }
    return digits.empty() ? std::nullopt : std::optional(result);
}

template <typename T>
void checkParser(const String& text, unsigned int base, const char* name, T (String::*parse)(bool*, unsigned int) const,
                 Wide mostPositive, Wide mostNegative, T (*valueOf)(std::uint64_t)) {
    const auto number = wholeNumber(normalized(TextModel(std::string(text.CStr(), text.Length()))), base,
                                    std::numeric_limits<T>::is_signed);
    const bool isRight = number && number->value <= (number->isNegative ? mostNegative : mostPositive);
    const auto bits = isRight ? static_cast<std::uint64_t>(number->value) : 0;
    bool ok = !isRight;
    expectEqual(name, (text.*parse)(&ok, base), valueOf(isRight && number->isNegative ? ~bits + 1 : bits));
    expectEqual(name, ok, isRight);
    expectEqual(name, (text.*parse)(nullptr, base), (text.*parse)(&ok, base));
}

template <typename T>
T lowBits(std::uint64_t bits) {
    return static_cast<T>(bits);
}

long long lowHalf(std::uint64_t bits) {
    return static_cast<std::int32_t>(bits);
}

void checkDouble(const String& text) {
    const std::string plain = normalized(TextModel(std::string(text.CStr(), text.Length())));
    char* end = nullptr;
    const double read = std::strtod(plain.c_str(), &end);
    const bool isRight = !text.IsEmpty() && end == plain.c_str() + plain.size();
    const double expected = isRight ? read : 0.0;
    bool ok = !isRight;
    const double value = text.ToDouble(&ok);
    expectEqual("ToDouble", ok, isRight);
    fuzz::expect("ToDouble's bits", std::memcmp(&value, &expected, sizeof value) == 0);
}

std::string textFrom(fuzz::Input& input) {
    const char* const pieces[] = {"0",
                                  "9",
                                  "-",
                                  "+",
                                  " ",
                                  "\t",
                                  ",",
                                  ".",
                                  "e",
                                  "0x",
                                  "inf",
                                  "nan",
                                  "2147483648",
                                  "65535",
                                  "32768",
                                  "4294967296",
                                  "18446744073709551615",
                                  "7FFFFFFF",
                                  "ffffffff",
                                  "\xA0",
                                  "\xC2\xA0",
                                  "\uFF10",
                                  "\uFF19",
                                  "\uFF0E",
                                  "\u3002",
                                  "\uFF0D",
                                  "\u2212",
                                  "\xED\xA0\x80",
                                  "\U0001D7CE",
                                  "\uFEFF"};
    std::string text;
    for (auto count = input.ConsumeIntegralInRange(0, 6); count > 0; --count) {
        text += input.ConsumeBool() ? input.PickValueInArray(pieces) : input.ConsumeRandomLengthString(20);
    }
    fuzz::trace() = " " + fuzz::shown(text);
    return text;
}

void checkParsers(fuzz::Input& input) {
    const String text = fuzz::stringOf(textFrom(input));
    const unsigned int bases[] = {10, 16, 2, 8, 36, 11, 0, input.ConsumeIntegralInRange(2U, 36U)};
    const unsigned int base = input.PickValueInArray(bases);
    fuzz::trace() += " in base " + std::to_string(base);
    checkParser<short>(text, base, "ToShort", &String::ToShort, 32767, 65535, lowBits<short>);
    checkParser<unsigned short>(text, base, "ToUShort", &String::ToUShort, 65535, 0, lowBits<unsigned short>);
    checkParser<int>(text, base, "ToInt", &String::ToInt, 2147483647, 2147483648, lowBits<int>);
    checkParser<unsigned int>(text, base, "ToUInt", &String::ToUInt, 0xFFFFFFFF, 0, lowBits<unsigned int>);
    checkParser<long long>(text, base, "ToInt64", &String::ToInt64, 0xFFFFFFFF, 0, lowHalf);
    checkParser<unsigned long long>(text, base, "ToUInt64", &String::ToUInt64, ~std::uint64_t{0}, 0,
                                    lowBits<unsigned long long>);
    checkDouble(text);
}

// --- Rendering

using Width = checked_value<unsigned int>;

std::string padded(std::string digits, const Width& width) {
    while (digits.size() < width.Value()) {
        digits.insert(digits.begin(), '0');
    }
    return digits;
}

std::string digitsOf(std::uint64_t value, unsigned int base) {
    std::string digits;
    do {
        digits.insert(digits.begin(), "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"[value % base]);
        value /= base;
    } while (value != 0);
    return digits;
}

std::string narrow(std::int64_t value, unsigned int anyBase, const Width& width) {
    const unsigned int base = anyBase < 2 || anyBase > 36 ? 10 : anyBase;
    if (value == std::numeric_limits<std::int32_t>::min()) {
        return narrow(value / base, base, width) + padded(digitsOf(2147483648U % base, base), width);
    }
    return (value < 0 ? "-" : "") +
           padded(digitsOf(static_cast<std::uint64_t>(value < 0 ? -value : value), base), width);
}

std::string wide(std::uint64_t bits, bool isNegative, unsigned int base, const Width& width) {
    if (base == 16) {
        return (isNegative && width.IsSet() ? "-" : "") + padded(digitsOf(bits, 16), width);
    }
    return (isNegative ? "-" : "") + padded(digitsOf(isNegative ? ~bits + 1 : bits, 10), width);
}

std::string floating(double value, unsigned int precision, const checked_value<unsigned int>& format) {
    const unsigned int letter = format.Value();
    std::ostringstream out;
    out.imbue(std::locale::classic());
    if (letter == 'e' || letter == 'E') {
        out << std::scientific;
    } else if (letter != 'g' && letter != 'G') {
        out << std::fixed;
    }
    out << (letter == 'E' || letter == 'F' || letter == 'G' ? std::uppercase : std::nouppercase)
        << std::setprecision(precision == String::NO_PRECISION ? 6 : static_cast<int>(std::min(precision, 99U)))
        << value;
    std::string text = out.str();
    std::replace(text.begin(), text.end(), '.', userPoint());
    if (letter == 'F' && !std::isfinite(value)) {  // for which a stream has no form of its own
        std::transform(text.begin(), text.end(), text.begin(),
                       [](char c) { return c == '-' ? c : static_cast<char>(c - 32); });
    }
    return text;
}

void expectText(const char* what, const String& real, const std::string& expected) {
    expectEqual(what, std::string(real.CStr(), real.Length()), expected);
}

void checkRendering(fuzz::Input& input) {
    const auto bits = input.ConsumeIntegral<std::uint64_t>() >> input.ConsumeIntegralInRange(0, 63);
    const auto value = static_cast<std::int64_t>(input.ConsumeBool() ? ~bits + 1 : bits);
    const auto number = static_cast<std::int32_t>(value);
    const auto natural = static_cast<std::uint32_t>(value);
    const unsigned int base = fuzz::number(input);
    const Width width = input.ConsumeBool() ? Width(fuzz::number(input) % 300) : Width();
    fuzz::trace() = " " + std::to_string(value) + " in base " + std::to_string(base) +
                    (width.IsSet() ? ", width " + std::to_string(width.Value()) : "");
    expectText("int", String::Number(number, base, width), narrow(number, base, width));
    expectText("unsigned", String::Number(natural, base, width), narrow(natural, base, width));
    expectText("long", String("%1").Arg(static_cast<long>(value), base, width), narrow(number, base, width));
    expectText("unsigned long", String::Number(static_cast<unsigned long>(value), base, width),
               narrow(natural, base, width));
    expectText("short", String("%1").Arg(static_cast<short>(value), base, width),
               narrow(static_cast<short>(value), base, width));
    expectText("long long", String::Number(static_cast<long long>(value), base, width),
               wide(static_cast<std::uint64_t>(value), value < 0, base, width));
    expectText("unsigned long long", String("%1").Arg(static_cast<unsigned long long>(value), base, width),
               wide(static_cast<std::uint64_t>(value), false, base, width));
}

void checkFloating(fuzz::Input& input) {
    const auto bits = input.ConsumeIntegral<std::uint64_t>();
    double value = input.ConsumeFloatingPoint<double>();
    if (input.ConsumeBool()) {
        std::memcpy(&value, &bits, sizeof value);
    }
    const unsigned int precision = fuzz::number(input);
    const auto format = input.ConsumeBool() ? checked_value<unsigned int>(fuzz::number(input)) : Width();
    fuzz::trace() = " " + fuzz::shown(value) + " with precision " + std::to_string(precision) + ", format " +
                    std::to_string(format.Value());
    expectText("double", String::Number(value, precision, format), floating(value, precision, format));
    const auto single = static_cast<float>(value / 2);
    expectText("float", String("%1").Arg(single, precision, format), floating(single, precision, format));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static constexpr void (*CHECKS[])(fuzz::Input&) = {checkParsers, checkRendering, checkFloating};
    fuzz::Input input(data, size);
    input.PickValueInArray(CHECKS)(input);
    return 0;
}
