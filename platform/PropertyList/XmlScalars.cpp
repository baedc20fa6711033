#include "platform/PropertyList/XmlScalars.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <system_error>

#include "platform/PropertyList/Reading.h"

namespace cv::plist {

namespace {

constexpr std::string_view WHITE_SPACE = " \t\r\n";

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = std::min(text.find_first_not_of(WHITE_SPACE), text.size());
    return text.substr(begin, text.find_last_not_of(WHITE_SPACE) + 1 - begin);
}

/// Takes the character off the text's beginning if it is there.
bool take(std::string_view& text, char character) {
    const bool isThere = !text.empty() && text.front() == character;
    text.remove_prefix(isThere ? 1 : 0);
    return isThere;
}

/// Whether the text is the word, which is in lower case, in any case.
bool isWord(std::string_view text, std::string_view word) {
    return std::equal(text.begin(), text.end(), word.begin(), word.end(), [](char given, char expected) {
        return given == expected || (given >= 'A' && given <= 'Z' && given - 'A' + 'a' == expected);
    });
}

/// Whether all of the text is a number in this base; it has no sign.
bool readUnsigned(std::string_view text, std::uint64_t& number, int base = 10) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc() && stop == end;
}

constexpr bool isLeap(std::int64_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// The days from 1 January 2001 to 1 January of the year.
constexpr std::int64_t daysTo(std::int64_t year) {
    // Counted from a year so early that the numbers are positive; 400 years have 146097 days.
    constexpr std::int64_t CYCLES = 1'000'000'000 / 400;
    constexpr std::int64_t TO_2001 = 2000 * 365 + 2000 / 4 - 2000 / 100 + 2000 / 400 + 146097 * CYCLES;
    const std::int64_t before = year + 400 * CYCLES - 1;
    return before * 365 + before / 4 - before / 100 + before / 400 - TO_2001;
}
static_assert(daysTo(2001) == 0 && daysTo(2005) == 4 * 365 + 1 && daysTo(1970) == -11323 && daysTo(-1) < 0);

int daysIn(std::uint64_t month, std::int64_t year) {
    constexpr int DAYS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return DAYS[month - 1] + (month == 2 && isLeap(year) ? 1 : 0);
}

/// Takes a number of so many digits off the beginning, and what follows it.
bool takeDigits(std::string_view& text, std::size_t digits, char follower, std::uint64_t& number) {
    const std::string_view taken = text.substr(0, digits);
    text.remove_prefix(taken.size());
    return taken.size() == digits && readUnsigned(taken, number) && take(text, follower);
}

/// What a character of base64 means: a digit's value, or one of these.
enum Base64 : signed char { NoBase64 = -1, Base64Space = -2, Base64Padding = -3 };

constexpr std::array<signed char, 256> base64Meanings() {
    constexpr std::string_view DIGITS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<signed char, 256> meanings{};
    for (signed char& meaning : meanings) {
        meaning = NoBase64;
    }
    for (std::size_t i = 0; i < DIGITS.size(); ++i) {
        meanings[static_cast<unsigned char>(DIGITS[i])] = static_cast<signed char>(i);
    }
    for (const char c : WHITE_SPACE) {
        meanings[static_cast<unsigned char>(c)] = Base64Space;
    }
    meanings['='] = Base64Padding;
    return meanings;
}

}  // namespace

Integer integerFrom(std::string_view text) {
    constexpr std::uint64_t LEAST = std::uint64_t{1} << 63;
    text = trimmed(text);
    const bool hasMinus = take(text, '-');
    if (!hasMinus) {
        take(text, '+');
    }
    const bool isHexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    text.remove_prefix(isHexadecimal ? 2 : 0);
    std::uint64_t number = 0;
    if (!readUnsigned(text, number, isHexadecimal ? 16 : 10) || (hasMinus && number > LEAST)) {
        refuseMalformed("an integer in it is damaged");
    }
    return {hasMinus ? 0 - number : number, hasMinus && number != 0};
}

Real realFrom(std::string_view text) {
    text = trimmed(text);
    const bool hasMinus = take(text, '-');
    if (!hasMinus) {
        take(text, '+');
    }
    const double sign = hasMinus ? -1 : 1;
    if (isWord(text, "nan")) {
        return {std::numeric_limits<double>::quiet_NaN(), false};
    }
    if (isWord(text, "inf") || isWord(text, "infinity")) {
        return {sign * std::numeric_limits<double>::infinity(), false};
    }
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    const bool isNumber = !text.empty() && (text[0] == '.' || (text[0] >= '0' && text[0] <= '9')) && stop == end;
    if (isNumber && error == std::errc::result_out_of_range) {
        refuseUnsupported("it holds a real number that 64 bits cannot carry");
    }
    if (!isNumber || error != std::errc()) {
        refuseMalformed("a real number in it is damaged");
    }
    return {sign * value, false};
}

Date dateFrom(std::string_view text) {
    constexpr std::size_t MOST_YEAR_DIGITS = 9;
    text = trimmed(text);
    const bool isBefore = take(text, '-');
    const std::size_t yearDigits = std::min(text.find('-'), text.size());
    std::uint64_t years = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    bool isDate = yearDigits >= 4 && yearDigits <= MOST_YEAR_DIGITS && takeDigits(text, yearDigits, '-', years) &&
                  takeDigits(text, 2, '-', month) && takeDigits(text, 2, 'T', day) && takeDigits(text, 2, ':', hour) &&
                  takeDigits(text, 2, ':', minute) && takeDigits(text, 2, 'Z', second) && text.empty();
    const std::int64_t year = isBefore ? -static_cast<std::int64_t>(years) : static_cast<std::int64_t>(years);
    isDate = isDate && month >= 1 && month <= 12 && day >= 1 &&
             day <= static_cast<std::uint64_t>(daysIn(month, year)) && hour < 24 && minute < 60 && second < 60;
    if (!isDate) {
        refuseMalformed("a date in it is damaged");
    }
    std::int64_t days = daysTo(year) + static_cast<std::int64_t>(day) - 1;
    for (std::uint64_t earlier = 1; earlier < month; ++earlier) {
        days += daysIn(earlier, year);
    }
    const auto inDay = static_cast<std::int64_t>((hour * 60 + minute) * 60 + second);
    return {static_cast<double>(days * 86400 + inDay)};
}

std::string bytesFrom(std::string_view text) {
    static constexpr std::array<signed char, 256> MEANINGS = base64Meanings();
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    std::size_t digits = 0, padding = 0;
    for (const char c : text) {
        const signed char meaning = MEANINGS[static_cast<unsigned char>(c)];
        if (meaning == Base64Space) {
            continue;
        }
        padding += meaning == Base64Padding ? 1 : 0;
        if (meaning == NoBase64 || padding > 2 || (meaning >= 0 && padding > 0)) {
            refuseMalformed("data in it is damaged");
        }
        bits = bits << 6 | (meaning >= 0 ? static_cast<std::uint32_t>(meaning) : 0);
        if (++digits % 4 == 0) {
            for (const unsigned shift : {16U, 8U, 0U}) {
                bytes += static_cast<char>(static_cast<unsigned char>(bits >> shift & 0xFF));
            }
        }
    }
    if (digits % 4 != 0) {
        refuseMalformed("data in it is damaged");
    }
    bytes.resize(bytes.size() - padding);
    return bytes;
}

bool isWhiteSpace(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; });
}

}  // namespace cv::plist
