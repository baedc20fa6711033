#include <CoreFoundation/CFString.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/support/CFSupport.h"

namespace {

using namespace std::string_literals;
using test::makeString;
using test::Owned;
using test::units;

/// The upper half of Mac OS Roman, as Apple's mapping table to Unicode lists it (ROMAN.TXT at unicode.org).
constexpr std::array<char16_t, 128> MAC_ROMAN = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5,
    0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3, 0x00F2, 0x00F4,
    0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6,
    0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8, 0x221E, 0x00B1, 0x2264, 0x2265,
    0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF,
    0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB, 0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5,
    0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044,
    0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9,
    0x0131, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,
};

Owned<CFStringRef> fromCString(const char* bytes, CFStringEncoding encoding = kCFStringEncodingUTF8) {
    return Owned<CFStringRef>(CFStringCreateWithCString(kCFAllocatorDefault, bytes, encoding));
}

Owned<CFStringRef> fromBytes(std::string_view bytes, CFStringEncoding encoding) {
    return Owned<CFStringRef>(
        CFStringCreateWithBytesNoCopy(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                      static_cast<CFIndex>(bytes.size()), encoding, false, kCFAllocatorNull));
}

TEST(CFString, ReadsUTF8) {
    const struct {
        const char* bytes;
        std::u16string expected;
    } cases[] = {
        {"", u""},
        {"abc", u"abc"},
        {"caf\xC3\xA9", u"caf\u00E9"},
        {"\xF0\x9F\x98\x80", u"\U0001F600"},
        {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        {"\xEF\xBF\xBF", u"\uFFFF"},
        {"\xEF\xBB\xBF", u""},
        {"\xEF\xBB\xBF"
         "a",
         u"a"},
        {"\xEF\xBB\xBF\xEF\xBB\xBF", u"\uFEFF"},
        {"a\xEF\xBB\xBF", u"a\uFEFF"},
    };
    for (const auto& c : cases) {
        const auto string = fromCString(c.bytes);
        ASSERT_TRUE(string) << c.bytes;
        EXPECT_EQ(units(string.get()), c.expected) << c.bytes;
    }
}

TEST(CFString, RefusesWhatIsNotUTF8) {
    for (const char* bytes : {
             "\x80",              // a continuation byte alone
             "a\xC3",             // cut short
             "\xE2\x82",          //
             "\xF0\x9F\x98",      //
             "\xC0\x80",          // overlong
             "\xC1\xBF",          //
             "\xE0\x9F\xBF",      //
             "\xF0\x8F\xBF\xBF",  //
             "\xED\xA0\x80",      // surrogates
             "\xED\xB0\x80",      //
             "\xED\xA0\xBD\xED\xB8\x80",
             "\xF4\x90\x80\x80",      // above U+10FFFF
             "\xF8\x88\x80\x80\x80",  // five bytes
             "\xFE",
             "\xFF",
             "abc\xC3(",
         }) {
        EXPECT_FALSE(fromCString(bytes)) << testing::PrintToString(bytes);
    }
    EXPECT_FALSE(fromCString(nullptr));
}

TEST(CFString, MacRomanIsTheMacsTableInBothDirections) {
    std::string bytes;
    std::u16string expected;
    for (int byte = 1; byte < 0x80; ++byte) {
        bytes += static_cast<char>(byte);
        expected += static_cast<char16_t>(byte);
    }
    for (int byte = 0x80; byte < 0x100; ++byte) {
        bytes += static_cast<char>(byte);
        expected += MAC_ROMAN[static_cast<std::size_t>(byte - 0x80)];
    }
    const auto string = fromCString(bytes.c_str(), kCFStringEncodingMacRoman);
    ASSERT_TRUE(string);
    EXPECT_EQ(units(string.get()), expected);

    std::vector<char> buffer(bytes.size() + 1, 'x');
    ASSERT_TRUE(CFStringGetCString(string.get(), buffer.data(), static_cast<CFIndex>(buffer.size()),
                                   kCFStringEncodingMacRoman));
    EXPECT_EQ(buffer.data(), bytes);
}

TEST(CFString, AsciiEndsAt7F) {
    EXPECT_EQ(units(fromCString("a\x7F", kCFStringEncodingASCII).get()), u"a\u007F");
    EXPECT_FALSE(fromCString("a\x80", kCFStringEncodingASCII));
    char buffer[8];
    EXPECT_TRUE(CFStringGetCString(CFSTR("a\x7F"), buffer, sizeof buffer, kCFStringEncodingASCII));
    EXPECT_STREQ(buffer, "a\x7F");
    EXPECT_FALSE(CFStringGetCString(CFSTR("\xC2\x80"), buffer, sizeof buffer, kCFStringEncodingASCII));
}

TEST(CFString, ReadsWideBytes) {
    const struct {
        CFStringEncoding encoding;
        std::string bytes;
        std::u16string expected;
    } cases[] = {
        {kCFStringEncodingUTF32LE, "", u""},
        {kCFStringEncodingUTF32LE, "a\0\0\0\xE9\0\0\0"s, u"a\u00E9"},
        {kCFStringEncodingUTF32LE, "\0\xF6\x01\0"s, u"\U0001F600"},
        {kCFStringEncodingUTF32LE, "\xFF\xFE\0\0a\0\0\0"s, u"\uFEFFa"},
        {kCFStringEncodingUTF16, "a\0\xE9\0"s, u"a\u00E9"},
        {kCFStringEncodingUTF16,
         "\xFF\xFE"
         "a\0"s,
         u"a"},
        {kCFStringEncodingUTF16, "\xFE\xFF\0a\xD8\x3D\xDE\0"s, u"a\U0001F600"},
        {kCFStringEncodingUTF8, "a\0b"s, {u"a\0b", 3}},
        {kCFStringEncodingMacRoman, "\xF0", u"\uF8FF"},
    };
    for (const auto& c : cases) {
        const auto string = fromBytes(c.bytes, c.encoding);
        ASSERT_TRUE(string) << testing::PrintToString(c.bytes);
        EXPECT_EQ(units(string.get()), c.expected) << testing::PrintToString(c.bytes);
    }
}

TEST(CFString, RefusesWideBytesThatAreNoText) {
    const struct {
        CFStringEncoding encoding;
        std::string bytes;
    } cases[] = {
        {kCFStringEncodingUTF32LE, "a\0\0"s},             // a part of a character
        {kCFStringEncodingUTF32LE, "\0\xD8\0\0"s},        // a surrogate
        {kCFStringEncodingUTF32LE, "\xFF\xDF\0\0"s},      //
        {kCFStringEncodingUTF32LE, "\0\0\x11\0"s},        // above U+10FFFF
        {kCFStringEncodingUTF32LE, "\xFF\xFF\xFF\xFF"s},  // a negative wchar_t
        {kCFStringEncodingUTF16, "a\0b"s},                // half a unit
        {kCFStringEncodingUTF16, "\x3D\xD8"s},            // unpaired
        {kCFStringEncodingUTF16, "\0\xDE\x3D\xD8"s},      // the wrong way round
        {0x0BFF, "a"},                                    // an unknown encoding
    };
    for (const auto& c : cases) {
        EXPECT_FALSE(fromBytes(c.bytes, c.encoding)) << testing::PrintToString(c.bytes);
    }
}

TEST(CFString, KeepsItsUnitsAsTheyAre) {
    for (const std::u16string& expected : {
             std::u16string(u"\0", 1),
             std::u16string(u"a\0b\0", 4),
             std::u16string{0xD800},
             std::u16string{0xDC00, 0xD800, u'a'},
             std::u16string(u"\uFEFFa"),
             std::u16string{0xFFFE, u'a'},
             std::u16string(300, u'\u4E00'),
         }) {
        EXPECT_EQ(units(makeString(expected).get()), expected) << testing::PrintToString(expected);
    }
    UniChar middle[2] = {};
    CFStringGetCharacters(CFSTR("abcd"), CFRangeMake(1, 2), middle);
    EXPECT_EQ(middle[0], 'b');
    EXPECT_EQ(middle[1], 'c');
}

TEST(CFString, DoesNotKeepTheCallersMemory) {
    std::u16string memory = u"before";
    const auto string = makeString(memory);
    memory = u"after!";
    EXPECT_EQ(units(string.get()), u"before");
    std::string bytes = "before";
    const auto wrapped = fromBytes(bytes, kCFStringEncodingUTF8);
    bytes = "after!";
    EXPECT_EQ(units(wrapped.get()), u"before");
}

TEST(CFString, OutputIsAllOrNothing) {
    const struct {
        std::u16string units;
        CFStringEncoding encoding;
        CFIndex size;
        const char* expected;  // null: refused
    } cases[] = {
        {u"", kCFStringEncodingUTF8, 1, ""},
        {u"", kCFStringEncodingUTF8, 0, nullptr},
        {u"abc", kCFStringEncodingUTF8, 4, "abc"},
        {u"abc", kCFStringEncodingUTF8, 3, nullptr},
        {u"\u20AC", kCFStringEncodingUTF8, 4, "\xE2\x82\xAC"},
        {u"\u20AC", kCFStringEncodingUTF8, 3, nullptr},
        {u"\U0001F600", kCFStringEncodingUTF8, 5, "\xF0\x9F\x98\x80"},
        {u"\uFEFFa", kCFStringEncodingUTF8, 9,
         "\xEF\xBB\xBF"
         "a"},
        {{u'a', 0xD83D}, kCFStringEncodingUTF8, 99, nullptr},
        {{0xDE00, u'a'}, kCFStringEncodingUTF8, 99, nullptr},
        {u"\u20AC", kCFStringEncodingMacRoman, 2, "\xDB"},
        {u"\u20AC", kCFStringEncodingMacRoman, 1, nullptr},
        {u"a\u4E00", kCFStringEncodingMacRoman, 99, nullptr},
        {u"a\uFF21", kCFStringEncodingMacRoman, 99, nullptr},
        {{u'a', 0xD83D}, kCFStringEncodingMacRoman, 99, nullptr},
        {u"\u066B", kCFStringEncodingASCII, 50, nullptr},
        {u"abc", 0x0BFF, 99, nullptr},
    };
    for (const auto& c : cases) {
        std::vector<char> buffer(static_cast<std::size_t>(c.size), 'x');
        const auto string = makeString(c.units);
        const bool written = CFStringGetCString(string.get(), buffer.data(), c.size, c.encoding);
        EXPECT_EQ(written, c.expected != nullptr) << testing::PrintToString(c.units);
        if (written && c.expected != nullptr) {
            EXPECT_STREQ(buffer.data(), c.expected);
        }
    }
}

TEST(CFString, OutputKeepsEmbeddedNULs) {
    char buffer[4] = {'x', 'x', 'x', 'x'};
    ASSERT_TRUE(CFStringGetCString(makeString({u"a\0b", 3}).get(), buffer, sizeof buffer, kCFStringEncodingUTF8));
    EXPECT_EQ(std::string(buffer, sizeof buffer), "a\0b\0"s);
}

TEST(CFString, TheMaximumSizeIsAFactorOfTheLength) {
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(7, kCFStringEncodingUTF8), 21);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(7, kCFStringEncodingMacRoman), 7);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(7, kCFStringEncodingUTF32LE), 28);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(0, kCFStringEncodingUTF8), 0);
}

const CFStringRef MADE_AT_START = CFSTR("made at start");

TEST(CFString, ConstantsAreOneObjectForOneText) {
    EXPECT_EQ(CFSTR("one"), CFSTR("one"));
    EXPECT_NE(CFSTR("one"), CFSTR("two"));
    EXPECT_EQ(CFSTR("made at start"), MADE_AT_START);
    EXPECT_EQ(units(CFSTR("caf\xC3\xA9")), u"caf\u00E9");
    EXPECT_EQ(units(CFSTR("")), u"");
}

TEST(CFString, ConstantsOutliveEveryRelease) {
    const CFStringRef constant = CFSTR("immortal");
    for (int i = 0; i < 10; ++i) {
        CFRelease(constant);
    }
    EXPECT_EQ(units(constant), u"immortal");
    EXPECT_EQ(CFSTR("immortal"), constant);
}

TEST(CFString, ConstantsMayBeMadeOnManyThreads) {
    std::array<CFStringRef, 8> made = {};
    std::vector<std::thread> threads;
    for (CFStringRef& slot : made) {
        threads.emplace_back([&slot] { slot = CFSTR("raced for"); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const CFStringRef constant : made) {
        EXPECT_EQ(constant, made.front());
    }
}

}  // namespace
