#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <string>

#include "CvBase/common/common_string.h"
#include "tests/support/Text.h"

using namespace std::string_literals;
using test::bytesOf;
using test::makeText;

using Bytes = std::optional<std::string>;
using Width = checked_value<unsigned int>;

namespace {

const Bytes NONE;

TEST(StringNumber, Of32Bits) {
    // clang-format off
    const struct { int value; unsigned int base; Width width; char const* text; } rows[] = {
        {0, 10, {}, "0"}, {0, 10, 0, "0"}, {0, 2, 3, "000"}, {255, 16, {}, "FF"}, {35, 36, {}, "Z"}, {5, 2, 4, "0101"},
        {-7, 10, 3, "-007"}, {-7, 10, 1, "-7"}, {-255, 16, {}, "-FF"}, {-255, 0, {}, "-255"}, {255, 1, {}, "255"}, {255, 37, 5, "00255"},
        {INT_MAX, 10, {}, "2147483647"}, {INT_MAX, 2, {}, "1111111111111111111111111111111"},
        {INT_MIN, 10, {}, "-2147483648"}, {INT_MIN, 2, {}, "-10000000000000000000000000000000"}, {INT_MIN, 16, {}, "-80000000"},
        {INT_MIN, 36, {}, "-ZIK0ZK"}, {INT_MIN, 1, {}, "-2147483648"},
        // The last digit of the least value is padded on its own.
        {INT_MIN, 10, 12, "-000214748364000000000008"}, {INT_MIN, 10, 3, "-214748364008"}, {INT_MIN + 1, 10, 12, "-002147483647"},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(String::Number(row.value, row.base, row.width), row.text);
        EXPECT_EQ(String::Number(long{row.value}, row.base, row.width), row.text);
        EXPECT_EQ(String("%1").Arg(row.value, row.base, row.width), row.text);
        EXPECT_EQ(String("%1").Arg(long{row.value}, row.base, row.width), row.text);
    }
    EXPECT_EQ(String::Number(UINT_MAX), "4294967295");
    EXPECT_EQ(String::Number(UINT_MAX, 2, 33), "011111111111111111111111111111111");
    EXPECT_EQ(String::Number(UINT_MAX, 36, {}), "1Z141Z3");
    EXPECT_EQ(String::Number(7, 10, 3000).Length(), 3000U);
}

TEST(StringNumber, TakesTheLower32BitsOfALong) {
    EXPECT_EQ(String::Number(static_cast<long>(5000000000)), "705032704");
    EXPECT_EQ(String::Number(static_cast<unsigned long>(0xFFFFFFFF0)), "4294967280");
    EXPECT_EQ(String("%1").Arg(static_cast<unsigned long>(5000000000)), "705032704");
    EXPECT_EQ(String("%1").Arg(5000000000LL), "5000000000");
}

TEST(StringNumber, Of64Bits) {
    // clang-format off
    const struct { long long value; unsigned int base; Width width; char const* asSigned; char const* asUnsigned; } rows[] = {
        {0, 10, {}, "0", "0"}, {255, 2, {}, "255", "255"}, {255, 36, 5, "00255", "00255"}, {255, 16, {}, "FF", "FF"},
        {-1, 16, {}, "FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFF"}, {-1, 10, {}, "-1", "18446744073709551615"},
        {-7, 16, 2, "-FFFFFFFFFFFFFFF9", "FFFFFFFFFFFFFFF9"}, {-7, 16, 18, "-00FFFFFFFFFFFFFFF9", "00FFFFFFFFFFFFFFF9"},
        {-7, 10, 3, "-007", "18446744073709551609"}, {-7, 8, 0, "-7", "18446744073709551609"},
        {LLONG_MIN, 10, {}, "-9223372036854775808", "9223372036854775808"},
        {LLONG_MIN, 10, 20, "-09223372036854775808", "09223372036854775808"}, {LLONG_MIN, 16, 1, "-8000000000000000", "8000000000000000"},
        {LLONG_MAX, 0, {}, "9223372036854775807", "9223372036854775807"},
    };
    // clang-format on
    for (const auto& row : rows) {
        const auto bits = static_cast<unsigned long long>(row.value);
        EXPECT_EQ(String::Number(row.value, row.base, row.width), row.asSigned);
        EXPECT_EQ(String::Number(bits, row.base, row.width), row.asUnsigned);
        EXPECT_EQ(String("%1").Arg(row.value, row.base, row.width), row.asSigned);
        EXPECT_EQ(String("%1").Arg(bits, row.base, row.width), row.asUnsigned);
    }
}

TEST(StringNumber, OfFloatingValues) {
    constexpr unsigned int NO = String::NO_PRECISION;
    // clang-format off
    const struct { double value; unsigned int precision; Width format; char const* text; } rows[] = {
        {1.5, NO, {}, "1.500000"}, {1.5, 2, {}, "1.50"}, {1.5, 0, 'f', "2"}, {1234.5, 3, 'e', "1.234e+03"}, {1234.5, NO, 'E', "1.234500E+03"},
        {0.0001, NO, 'g', "0.0001"}, {1e-10, 3, 'G', "1E-10"}, {-0.0, 1, 'F', "-0.0"}, {1.5, 1, 'x', "1.5"}, {1.5, 1, 0, "1.5"},
        {1.5, 1, 0x166, "1.5"}, {1.5, 1, 0x80000065, "1.5"}, {1e300, 1, 'g', "1e+300"},
        {HUGE_VAL, 2, {}, "inf"}, {-HUGE_VAL, NO, 'E', "-INF"}, {NAN, 2, {}, "nan"},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(String::Number(row.value, row.precision, row.format), row.text);
        EXPECT_EQ(String("%1").Arg(row.value, row.precision, row.format), row.text);
    }
    EXPECT_EQ(String::Number(0.1F), "0.100000");
    EXPECT_EQ(String::Number(0.1F, 10), "0.1000000015");
    EXPECT_EQ(String("%1").Arg(2.5F, 1), "2.5");
    EXPECT_EQ(String::Number(1.0 / 3, 200), String::Number(1.0 / 3, 99));
    EXPECT_EQ(String::Number(1.0 / 3, 99).Length(), 101U);
    EXPECT_EQ(String::Number(std::numeric_limits<double>::max(), 99).Length(), 409U);
}

TEST(StringArg, FillsTheLowestPlaceholder) {
    // clang-format off
    const struct { Bytes text; char const* first; char const* second; Bytes result; } rows[] = {
        {"%2 of %1", "x", "y", "y of x"}, {"%1 and %1", "a", "b", "a and b"}, {"%7%3", "a", "b", "ba"}, {"%0%1", "a", "b", "ab"},
        {"%10", "x", "y", "x0y"}, {"100%", "x", "y", "100%xy"}, {"%%1", "x", "y", "%xy"}, {"%", "x", "y", "%xy"},
        {"%a%", "x", "", "%a%x"}, {"", "x", "y", "xy"}, {NONE, "x", "y", "xy"}, {NONE, "", "", NONE}, {"%9", nullptr, "", ""},
        {"%1 %2", "%1", "x", "x %2"},  // a placeholder that came in with an argument is one for the next
        {"a\0%1"s, "x", "", "a\0x"s}, {"%1%\xB9", "x", "", "x%\xB9"},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(bytesOf(makeText(row.text).Arg(row.first).Arg(row.second)), row.result);
    }
    EXPECT_EQ(String("%1 and %1").Arg("a"), "a and %1");
}

TEST(StringArg, TakesEveryKindOfValue) {
    const short negative = -5;
    const unsigned short positive = 65535;
    EXPECT_EQ(
        String("%1 %2 %3 %4 %5 %6").Arg('c').Arg(Char('d')).Arg(negative, 10, 2).Arg(positive, 16).Arg("s").Arg(true),
        "c d -05 FFFF s 1");
    EXPECT_EQ(bytesOf(String("a%1b").Arg('\0')), "a\0b"s);
    const String filled = String("%1").Arg(makeText("a\0b"s));
    EXPECT_EQ(bytesOf(filled), "a\0b"s);
    EXPECT_EQ(String("Attempt to read %1 bytes, only read %2 bytes").Arg(4U).Arg(2U),
              "Attempt to read 4 bytes, only read 2 bytes");
}

}  // namespace
