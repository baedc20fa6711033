#include "tests/support/Text.h"

using Width = checked_value<unsigned int>;

namespace {

using namespace test;

TEST(StringNumber, Of32Bits) {
    // clang-format off
    const struct { int value; unsigned int base; Width width; const char* text; } rows[] = {
        {0, 10, {}, "0"}, {0, 10, 0, "0"}, {9, 10, {}, "9"}, {10, 10, {}, "10"}, {99, 10, {}, "99"}, {-100, 10, {}, "-100"}, {0, 2, 3, "000"}, {255, 16, {}, "FF"}, {35, 36, {}, "Z"}, {5, 2, 4, "0101"},
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
    EXPECT_EQ(String("%1").Arg(UINT_MAX, 16, 10), "00FFFFFFFF");
    // Around what is rendered without taking memory.
    for (unsigned int width = 1; width < 100; ++width) {
        EXPECT_EQ(String::Number(-7, 10, width), ("-" + std::string(width - 1, '0') + "7").c_str());
        EXPECT_EQ(String("<%1>").Arg(7ULL, 10, width), ("<" + std::string(width - 1, '0') + "7>").c_str());
    }
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
    const struct { long long value; unsigned int base; Width width; const char* asSigned; const char* asUnsigned; } rows[] = {
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
    const struct { double value; unsigned int precision; Width format; const char* text; } rows[] = {
        {1.5, NO, {}, "1.500000"}, {1.5, 2, {}, "1.50"}, {1.5, 0, 'f', "2"}, {1234.5, 3, 'e', "1.234e+03"}, {1234.5, NO, 'E', "1.234500E+03"},
        {0.0001, NO, 'g', "0.0001"}, {1e-10, 3, 'G', "1E-10"}, {-0.0, 1, 'F', "-0.0"}, {1.5, 1, 'x', "1.5"}, {1.5, 1, 0, "1.5"},
        {1.5, 1, 0x166, "1.5"}, {1.5, 1, 0x80000065, "1.5"}, {1e300, 1, 'g', "1e+300"},
        {HUGE_VAL, 2, {}, "inf"}, {HUGE_VAL, 2, 'F', "INF"}, {-HUGE_VAL, NO, 'E', "-INF"}, {NAN, 2, {}, "nan"},
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
    const struct { MaybeBytes text; const char* first; const char* second; MaybeBytes result; } rows[] = {
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
    EXPECT_EQ(bytesOf(String("%1").Arg(makeText("a\0b"s))), "a\0b"s);
}

template <typename R>
struct Row {
    std::string text;
    unsigned int base;
    checked_value<R> value;  // unset: the text is refused
};

template <typename R>
void expect(const std::function<R(const String&, bool*, unsigned int)>& parse, std::initializer_list<Row<R>> rows) {
    for (const Row<R>& row : rows) {
        const String text = makeText(row.text);
        bool ok = !row.value.IsSet();
        EXPECT_EQ(parse(text, &ok, row.base), row.value.Value()) << PrintToString(row.text);
        EXPECT_EQ(ok, row.value.IsSet()) << PrintToString(row.text) << " in base " << row.base;
        EXPECT_EQ(parse(text, nullptr, row.base), row.value.Value());
    }
}

// clang-format off

TEST(StringToInt, WhiteSpaceSignsAndRange) {
    expect<int>(&String::ToInt, {
        {"42", 10, 42}, {"  42  ", 10, 42}, {"\t\n42\v\f\r", 10, 42}, {"\xA0" "42\xA0", 10, 42}, {"4 2", 10, {}}, {"+7", 10, 7}, {"-7", 10, -7},
        {"- 7", 10, {}}, {"+-7", 10, {}}, {"--7", 10, {}}, {"-", 10, {}}, {"+", 10, {}}, {"", 10, {}}, {" ", 10, {}}, {"7-", 10, {}},
        {"7x", 10, {}}, {"007", 10, 7}, {"-0", 10, 0}, {"00000000000000000000000000000001", 10, 1}, {"2147483647", 10, INT_MAX},
        {"2147483648", 10, {}}, {"-2147483648", 10, INT_MIN}, {"-2147483649", 10, {}}, {"4294967296", 10, {}}, {" 4294967297 ", 10, {}},
        {"99999999999999999999", 10, {}}, {"1,5", 10, {}}, {"1.", 10, {}}, {",", 10, {}},
    });
    EXPECT_EQ(String().ToInt(), 0);
}

TEST(StringToInt, Bases) {
    expect<int>(&String::ToInt, {
        {"fF", 16, 255}, {"g", 16, {}}, {"G", 16, {}}, {"0x1F", 16, {}}, {"-7fffffff", 16, -INT_MAX}, {"8", 8, {}}, {"777", 8, 511},
        {"a", 10, {}}, {"a", 11, 10}, {"b", 11, {}}, {"Zz", 36, 35 * 36 + 35}, {"2", 2, {}}, {"-101", 2, -5}, {"80000000", 16, {}},
        {"-80000000", 16, INT_MIN}, {"@", 16, {}}, {"`", 16, {}}, {"[", 36, {}}, {"{", 36, {}},
        {"000", 1, 0}, {"1", 1, {}}, {"0", 0, {}}, {"7", 0, {}}, {"", 0, {}},
        // Beyond 36, the bytes after the letters go on as digits.
        {"a", 100, 'a' - 55}, {"~", 1000, '~' - 55}, {"\x7F", 0xFFFFFFFF, 0x7F - 55}, {"\xC3\xA9", 255, {}}, {"10", 70000, 70000},
        {"11", 0x80000000, {}},
    });
    EXPECT_EQ(String("0").ToShort(nullptr, 70000), 0);
    EXPECT_EQ(String("10").ToUShort(nullptr, 65536), 0);
}

TEST(StringToInt, OtherWritings) {
    expect<int>(&String::ToInt, {
        {"\xEF\xBC\x91\xEF\xBC\x92", 10, 12}, {" \xEF\xBC\x90\xEF\xBC\x99 ", 10, 9},        // full-width digits
        {"\xE2\x88\x92" "5", 10, -5}, {"\xEF\xBC\x8D\xEF\xBC\x95", 10, -5},                 // minus signs
        {"\xEF\xBC\xA1", 16, {}}, {"\xEF\xBC\x8B" "5", 10, {}}, {"\xC2\xA0" "5", 10, {}},   // full-width A and plus, no-break space
        {"1\xE3\x80\x82", 10, {}}, {"1\xEF\xBC\x8E", 10, {}},                               // full-width stops are decimal points
        {"12\xE9", 10, {}}, {"\xE9" "12", 10, {}}, {"12\xEF\xBC", 10, {}},
        // What follows a NUL byte is dropped with the commas' replacement, unless a comma brings it back.
        {"12\0"s, 10, 12}, {"12\0x"s, 10, 12}, {"12\0,"s, 10, {}}, {"\0" "12"s, 10, {}}, {"12\0\xEF\xBC\x91"s, 10, 12},
    });
}

TEST(StringToInt, OtherTypes) {
    expect<short>(&String::ToShort, {
        {"32767", 10, 32767}, {"32768", 10, {}}, {"40000", 10, {}}, {"-32768", 10, SHRT_MIN}, {"-40000", 10, 25536}, {"-65535", 10, 1},
        {"-65536", 10, {}}, {"65536", 10, {}}, {"655360", 10, {}}, {"-FFFF", 16, 1},
    });
    expect<unsigned short>(&String::ToUShort, {
        {"65535", 10, 65535}, {"65536", 10, {}}, {"+1", 10, 1}, {"-1", 10, {}}, {"-0", 10, {}}, {"131073", 10, {}}, {"FFFF", 16, 65535},
    });
    expect<unsigned int>(&String::ToUInt, {
        {"4294967295", 10, UINT_MAX}, {"4294967296", 10, {}}, {"-1", 10, {}}, {"-0", 10, {}}, {"+0", 10, 0U}, {"8589934593", 10, {}},
    });
    expect<long long>(&String::ToInt64, {
        {"2147483647", 10, INT_MAX}, {"2147483648", 10, INT_MIN}, {"3000000000", 10, -1294967296}, {"4294967295", 10, -1},
        {"4294967296", 10, {}}, {"5000000000", 10, {}}, {"-5", 10, {}}, {"-0", 10, 0}, {"+5", 10, 5}, {"18446744073709551616", 10, {}},
    });
    expect<unsigned long long>(&String::ToUInt64, {
        {"18446744073709551615", 10, ULLONG_MAX}, {"18446744073709551616", 10, {}}, {"-1", 10, {}}, {"5000000000", 10, 5000000000ULL},
        {"184467440737095516160", 10, {}}, {"FFFFFFFFFFFFFFFF", 16, ULLONG_MAX}, {"10000000000000000", 16, {}},
    });
}

TEST(StringToDouble, TakesWhateverStrtodTakesWhole) {
    expect<double>([](const String& text, bool* ok, unsigned int) { return text.ToDouble(ok); }, {
        {"1.5", 10, 1.5}, {"1,5", 10, 1.5}, {" \t1.5\n", 10, 1.5}, {"-1.5e3", 10, -1500.0}, {"+.5", 10, 0.5}, {"5.", 10, 5.0}, {",5", 10, 0.5},
        {"1e999", 10, HUGE_VAL}, {"-1e999", 10, -HUGE_VAL},
        {"0x1p4", 10, 16.0}, {"inf", 10, HUGE_VAL}, {"-INFINITY", 10, -HUGE_VAL}, {"1e-999", 10, 0.0}, {"4.9e-324", 10, 4.9e-324},
        {"1.5x", 10, {}}, {"", 10, {}}, {"x", 10, {}}, {"1.5 2", 10, {}}, {"1.000,5", 10, {}}, {"1,000.5", 10, {}}, {"- 1", 10, {}}, {"e5", 10, {}},
        // Texts that normalise to nothing are a 0 that succeeds.
        {" ", 10, 0.0}, {"\xA0\n", 10, 0.0}, {"\xE9", 10, 0.0}, {"12\xE9", 10, 0.0}, {"\xC3", 10, 0.0},
        {"\xEF\xBC\x91\xEF\xBC\x8E\xEF\xBC\x95", 10, 1.5}, {"1\xE3\x80\x82" "5", 10, 1.5}, {"\xE2\x88\x92" "1.5", 10, -1.5}, {"\xC3\xA9", 10, {}},
        {"1.5\0"s, 10, 1.5}, {"1\0" ",5"s, 10, {}},
    });
    expect<float>([](const String& text, bool* ok, unsigned int) { return text.ToFloat(ok); }, {
        {"0.1", 10, 0.1F}, {"-1e300", 10, -HUGE_VALF}, {"1e-300", 10, 0.0F}, {"0.1f", 10, {}},
    });
    bool ok = false;
    EXPECT_TRUE(std::isnan(String("nan").ToDouble(&ok)) && ok);
    EXPECT_FALSE(std::signbit(String().ToDouble(&ok)) || ok);
}

// clang-format on

TEST(StringToInt, TooLongForConversion) {
    // Normalising takes bytes beyond ASCII through UTF-16, which accepts 100000 units one way and refuses them back.
    for (const unsigned int units : {99999U, 100000U, 100001U}) {
        const String text = makeText(std::string(units - 1, '0') + "\xEF\xBC\x95");
        bool ok = false;
        EXPECT_EQ(text.ToInt(&ok), units < 100000 ? 5 : 0);
        EXPECT_EQ(ok, units < 100000);
        EXPECT_EQ(text.ToDouble(&ok), units < 100000 ? 5.0 : 0.0);
        EXPECT_TRUE(ok);
    }
}

}  // namespace
