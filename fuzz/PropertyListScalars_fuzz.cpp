// The texts in which XML property lists keep numbers, dates and data, against regular expressions and the C library.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <optional>
#include <regex>

#include "fuzz/Fuzz.h"
#include "platform/PropertyList/Reading.h"
#include "platform/PropertyList/XmlScalars.h"

namespace {

using fuzz::expectEqual;

/// The pattern with white space around it.
std::regex spaced(const std::string& pattern) {
    const std::string space = "[ \t\r\n]*";
    return std::regex(space + pattern + space);
}

const std::regex INTEGER = spaced("([+-]?)(0[xX])?([0-9a-fA-F]+)");
const std::regex DIGITS = spaced("[+-]?([0-9]+\\.?[0-9]*|\\.[0-9]+)([eE][+-]?[0-9]+)?");
const std::regex WORD = spaced("[+-]?([iI][nN][fF]([iI][nN][iI][tT][yY])?|[nN][aA][nN])");
const std::regex DATE = spaced("(-?[0-9]{4,9})-([0-9]{2})-([0-9]{2})T([0-9]{2}):([0-9]{2}):([0-9]{2})Z");
const std::regex DATA("([A-Za-z0-9+/]{4})*([A-Za-z0-9+/]{2}==|[A-Za-z0-9+/]{3}=)?");

std::smatch matched(const std::string& text, const std::regex& pattern) {
    std::smatch match;
    std::regex_match(text, match, pattern);
    return match;
}

/// What the reader gives; nothing when it refuses the text.
template <typename Reader>
auto readBy(const Reader& reader, const std::string& text) -> std::optional<decltype(reader(text))> {
    try {
        return reader(text);
    } catch (const cv::plist::Refusal&) {
        return std::nullopt;
    }
}

void checkInteger(const std::string& text) {
    const auto value = readBy(cv::plist::integerFrom, text);
    const std::smatch match = matched(text, INTEGER);
    const bool isHexadecimal = match.length(2) > 0;
    unsigned __int128 number = 0;
    bool isRight = !match.empty();
    for (const char c : match.str(3)) {
        number = number * (isHexadecimal ? 16 : 10) +
                 static_cast<unsigned>(std::strtol(std::string(1, c).c_str(), nullptr, 16));
        isRight = isRight && number >> 64 == 0 && (isHexadecimal || (c >= '0' && c <= '9'));
    }
    const bool hasMinus = match.str(1) == "-";
    const auto bits = static_cast<std::uint64_t>(number);
    isRight = isRight && (!hasMinus || bits <= std::uint64_t{1} << 63);
    expectEqual("an integer", value.has_value(), isRight);
    if (value) {
        expectEqual("an integer's bits", value->bits, hasMinus ? ~bits + 1 : bits);
        expectEqual("an integer's sign", value->isNegative, hasMinus && bits != 0);
    }
}

void checkReal(const std::string& text) {
    const auto value = readBy(cv::plist::realFrom, text);
    const std::smatch digits = matched(text, DIGITS);
    const std::smatch word = matched(text, WORD);
    const double number = std::strtod(text.c_str(), nullptr);
    const bool isZero = digits.str(1).find_first_of("123456789") == std::string::npos;
    const bool isRight = !word.empty() || (!digits.empty() && std::isfinite(number) && (number != 0 || isZero));
    expectEqual("a real", value.has_value(), isRight);
    if (value && !std::isnan(number)) {
        expectEqual("a real's value", value->value, number);
        expectEqual("a real's sign", std::signbit(value->value), std::signbit(number));
    } else if (value) {
        fuzz::expect("no number", std::isnan(value->value));
    }
}

void checkDate(const std::string& text) {
    const auto value = readBy(cv::plist::dateFrom, text);
    const std::smatch match = matched(text, DATE);
    const auto part = [&](std::size_t i) { return match.empty() ? 0 : std::stoi(match.str(i)); };
    std::tm given{};
    given.tm_year = part(1) - 1900;
    given.tm_mon = part(2) - 1;
    given.tm_mday = part(3);
    given.tm_hour = part(4);
    given.tm_min = part(5);
    given.tm_sec = part(6);
    std::tm real = given;
    const std::time_t seconds = timegm(&real);
    const bool isRight = !match.empty() && real.tm_mon == given.tm_mon && real.tm_mday == given.tm_mday &&
                         real.tm_hour == given.tm_hour && real.tm_min == given.tm_min && real.tm_sec == given.tm_sec;
    expectEqual("a date", value.has_value(), isRight);
    if (value) {
        constexpr std::time_t TO_2001 = 978307200;
        expectEqual("a date's seconds", value->seconds, static_cast<double>(seconds - TO_2001));
    }
}

std::string withoutSpace(std::string text) {
    text.erase(
        std::remove_if(text.begin(), text.end(), [](char c) { return std::strchr(" \t\r\n", c) != nullptr && c != 0; }),
        text.end());
    return text;
}

void checkData(const std::string& text) {
    static const std::string BASE64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const auto value = readBy(cv::plist::bytesFrom, text);
    const std::string dense = withoutSpace(text);
    const bool isRight = std::regex_match(dense, DATA);
    std::string bits;
    for (const char c : dense.substr(0, dense.find('='))) {
        for (int bit = 5; bit >= 0; --bit) {
            bits += (BASE64.find(c) >> bit & 1) != 0 ? '1' : '0';
        }
    }
    std::string bytes;
    for (std::size_t i = 0; i + 8 <= bits.size(); i += 8) {
        bytes += static_cast<char>(std::stoi(bits.substr(i, 8), nullptr, 2));
    }
    expectEqual("data", value.has_value(), isRight);
    expectEqual("data's bytes", value.value_or(""), isRight ? bytes : "");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static const char* const PIECES[] = {"0",
                                         "1",
                                         "9",
                                         "-",
                                         "+",
                                         " ",
                                         "\n",
                                         ".",
                                         "e",
                                         "E-",
                                         "0x",
                                         "inf",
                                         "Infinity",
                                         "NaN",
                                         "9223372036854775808",
                                         "18446744073709551615",
                                         "1797693134862315",
                                         "4.9",
                                         "324",
                                         "308",
                                         "2000-02-29T",
                                         "1900-02-29T",
                                         "-0001-",
                                         "99999",
                                         "23:59:59Z",
                                         "24:00:00Z",
                                         "T",
                                         ":",
                                         "Z",
                                         "12-31",
                                         "AAAA",
                                         "ab==",
                                         "abc=",
                                         "=",
                                         "/+"};
    fuzz::Input input(data, size);
    std::string text;
    for (auto count = input.ConsumeIntegralInRange(0, 8); count > 0; --count) {
        text += input.ConsumeBool() ? input.PickValueInArray(PIECES) : input.ConsumeRandomLengthString(12);
    }
    fuzz::trace() = " " + fuzz::shown(text);
    checkInteger(text);
    checkReal(text);
    checkDate(text);
    checkData(text);
    return 0;
}
