#include <CoreFoundation/CFString.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
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

constexpr CFStringEncoding UTF8 = kCFStringEncodingUTF8, UTF16 = kCFStringEncodingUTF16,
                           UTF32 = kCFStringEncodingUTF32LE, MAC_ROMAN = kCFStringEncodingMacRoman,
                           ASCII = kCFStringEncodingASCII, UNKNOWN = 0x0BFF;

/// The upper half of Mac OS Roman, as Apple's mapping table to Unicode lists it (ROMAN.TXT at unicode.org).
constexpr std::u16string_view UPPER_MAC_ROMAN =
    u"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü"
    u"†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªºΩæø"
    u"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ"
    u"‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ";

Owned<CFStringRef> fromCString(const char* bytes, CFStringEncoding encoding) {
    return Owned<CFStringRef>(CFStringCreateWithCString(kCFAllocatorDefault, bytes, encoding));
}

Owned<CFStringRef> fromBytes(std::string_view bytes, CFStringEncoding encoding) {
    return Owned<CFStringRef>(
        CFStringCreateWithBytesNoCopy(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                      static_cast<CFIndex>(bytes.size()), encoding, false, kCFAllocatorNull));
}

TEST(CFString, ReadsText) {
    const struct {
        CFStringEncoding encoding;
        std::string bytes;
        std::u16string expected;
    } cases[] = {
        {UTF8, "", u""},
        {UTF8, "caf\xC3\xA9", u"caf\u00E9"},
        {UTF8, "\xF0\x9F\x98\x80", u"\U0001F600"},
        {UTF8, "\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        {UTF8, "\xEF\xBF\xBF", u"\uFFFF"},
        {UTF8, "\xEF\xBB\xBF", u""},
        {UTF8, "\xEF\xBB\xBF\xEF\xBB\xBF", u"\uFEFF"},
        {UTF8, "a\xEF\xBB\xBF", u"a\uFEFF"},
        {UTF8, "a\0b"s, {u"a\0b", 3}},
        {UTF32, "", u""},
        {UTF32, "a\0\0\0\xE9\0\0\0"s, u"a\u00E9"},
        {UTF32, "\0\xF6\x01\0"s, u"\U0001F600"},
        {UTF32, "\xFF\xFE\0\0a\0\0\0"s, u"\uFEFFa"},
        {UTF16, "a\0\xE9\0"s, u"a\u00E9"},
        {UTF16, "\xFF\xFE\x61\0"s, u"a"},
        {UTF16, "\xFE\xFF\0a\xD8\x3D\xDE\0"s, u"a\U0001F600"},
        {ASCII, "a\x7F", u"a\u007F"},
    };
    for (const auto& c : cases) {
        const auto string = fromBytes(c.bytes, c.encoding);
        ASSERT_TRUE(string) << testing::PrintToString(c.bytes);
        EXPECT_EQ(units(string.get()), c.expected) << testing::PrintToString(c.bytes);
        if (c.bytes.find('\0') == std::string::npos) {
            EXPECT_EQ(units(fromCString(c.bytes.c_str(), c.encoding).get()), c.expected);
        }
    }
}

TEST(CFString, RefusesWhatIsNoText) {
    const struct {
        CFStringEncoding encoding;
        const char* why;
        std::vector<std::string> texts;
    } cases[] = {
        {UTF8, "cut short", {"\x80", "a\xC3", "abc\xC3(", "\xE2\x82", "\xF0\x9F\x98"}},
        {UTF8, "overlong", {"\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF"}},
        {UTF8, "surrogates", {"\xED\xA0\x80", "\xED\xB0\x80", "\xED\xA0\xBD\xED\xB8\x80"}},
        {UTF8, "above U+10FFFF", {"\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFE", "\xFF"}},
        {ASCII, "above 7F", {"a\x80"}},
        {UTF32, "a part of a character", {"a\0\0"s}},
        {UTF32, "surrogates", {"\0\xD8\0\0"s, "\xFF\xDF\0\0"s}},
        {UTF32, "above U+10FFFF", {"\0\0\x11\0"s, "\xFF\xFF\xFF\xFF"s}},
        {UTF16, "half a unit", {"a\0b"s}},
        {UTF16, "unpaired surrogates", {"\x3D\xD8"s, "\0\xDE\x3D\xD8"s}},
        {UNKNOWN, "an unknown encoding", {"a"}},
    };
    for (const auto& c : cases) {
        for (const std::string& bytes : c.texts) {
            EXPECT_FALSE(fromBytes(bytes, c.encoding)) << c.why;
            EXPECT_FALSE(bytes.find('\0') == std::string::npos && fromCString(bytes.c_str(), c.encoding)) << c.why;
        }
    }
    EXPECT_FALSE(fromCString(nullptr, UTF8));
}

TEST(CFString, MacRomanIsTheMacsTableInBothDirections) {
    ASSERT_EQ(UPPER_MAC_ROMAN.size(), 0x80U);
    std::string bytes;
    std::u16string expected;
    for (int byte = 1; byte < 0x80; ++byte) {
        bytes += static_cast<char>(byte);
        expected += static_cast<char16_t>(byte);
    }
    for (int byte = 0x80; byte < 0x100; ++byte) {
        bytes += static_cast<char>(byte);
    }
    expected += UPPER_MAC_ROMAN;
    const auto string = fromCString(bytes.c_str(), MAC_ROMAN);
    ASSERT_TRUE(string);
    EXPECT_EQ(units(string.get()), expected);
    char buffer[0x100] = {};
    ASSERT_TRUE(CFStringGetCString(string.get(), buffer, sizeof buffer, MAC_ROMAN));
    EXPECT_EQ(buffer, bytes);
}

TEST(CFString, KeepsItsUnitsAsTheyAreInMemoryOfItsOwn) {
    for (const std::u16string& expected : {
             std::u16string(u"a\0b\0", 4),
             std::u16string{0xDC00, 0xD800, u'a'},
             std::u16string(u"\uFEFFa"),
             std::u16string{0xFFFE, u'a'},
             std::u16string(300, u'\u4E00'),
         }) {
        std::u16string memory = expected;
        const auto string = makeString(memory);
        memory.assign(memory.size(), u'x');
        EXPECT_EQ(units(string.get()), expected) << testing::PrintToString(expected);
    }
    std::string bytes = "before";
    const auto wrapped = fromBytes(bytes, UTF8);
    bytes = "after!";
    EXPECT_EQ(units(wrapped.get()), u"before");
    UniChar middle[2] = {};
    CFStringGetCharacters(wrapped.get(), CFRangeMake(1, 2), middle);
    EXPECT_EQ(middle[0], 'e');
    EXPECT_EQ(middle[1], 'f');
}

TEST(CFString, OutputIsAllOrNothing) {
    const struct {
        std::u16string units;
        CFStringEncoding encoding;
        CFIndex size;
        std::string expected;  // with its end; empty: refused
    } cases[] = {
        {u"", UTF8, 1, "\0"s},
        {u"", UTF8, 0, ""},
        {u"abc", UTF8, 4, "abc\0"s},
        {u"abc", UTF8, 3, ""},
        {u"\u20AC", UTF8, 4, "\xE2\x82\xAC\0"s},
        {u"\u20AC", UTF8, 3, ""},
        {u"\U0001F600", UTF8, 5, "\xF0\x9F\x98\x80\0"s},
        {u"\uFEFFa", UTF8, 5, "\xEF\xBB\xBF\x61\0"s},
        {{u"a\0b", 3}, UTF8, 4, "a\0b\0"s},
        {{u'a', 0xD83D}, UTF8, 99, ""},
        {{0xDE00, u'a'}, UTF8, 99, ""},
        {u"\u20AC", MAC_ROMAN, 2, "\xDB\0"s},
        {u"\u20AC", MAC_ROMAN, 1, ""},
        {u"a\u4E00", MAC_ROMAN, 99, ""},
        {u"a\uFF21", MAC_ROMAN, 99, ""},
        {{u'a', 0xD83D}, MAC_ROMAN, 99, ""},
        {u"a\x7F", ASCII, 3, "a\x7F\0"s},
        {u"\u0080", ASCII, 50, ""},
        {u"\u066B", ASCII, 50, ""},
        {u"abc", UNKNOWN, 99, ""},
    };
    for (const auto& c : cases) {
        std::string buffer(static_cast<std::size_t>(c.size), 'x');
        const auto string = makeString(c.units);
        const bool written = CFStringGetCString(string.get(), buffer.data(), c.size, c.encoding);
        EXPECT_EQ(written, !c.expected.empty()) << testing::PrintToString(c.units);
        if (written) {
            EXPECT_EQ(buffer, c.expected);
        }
    }
}

TEST(CFString, TheMaximumSizeIsAFactorOfTheLength) {
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(7, UTF8), 21);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(7, MAC_ROMAN), 7);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(7, UTF32), 28);
}

const CFStringRef MADE_AT_START = CFSTR("made at start");

TEST(CFString, ConstantsAreOneObjectForOneTextAndOutliveEveryRelease) {
    for (int i = 0; i < 10; ++i) {
        CFRelease(MADE_AT_START);
    }
    EXPECT_EQ(CFSTR("made at start"), MADE_AT_START);
    EXPECT_EQ(units(MADE_AT_START), u"made at start");
    EXPECT_NE(CFSTR("another"), MADE_AT_START);
    EXPECT_EQ(units(CFSTR("caf\xC3\xA9")), u"caf\u00E9");
    EXPECT_EQ(units(CFSTR("")), u"");

    std::array<CFStringRef, 8> made = {};
    std::vector<std::thread> threads;
    for (CFStringRef& slot : made) {
        threads.emplace_back([&slot] { slot = CFSTR("raced for"); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(std::count(made.begin(), made.end(), made[0]), 8);
}

}  // namespace
