#include <CoreFoundation/CFString.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/CFSupport.h"

namespace {

using namespace std::string_literals;
using cv::CFReference;
using test::makeString;
using test::units;

constexpr CFStringEncoding UTF8 = kCFStringEncodingUTF8, UTF16 = kCFStringEncodingUTF16,
                           UTF32 = kCFStringEncodingUTF32LE, MAC_ROMAN = kCFStringEncodingMacRoman,
                           ASCII = kCFStringEncodingASCII, UNKNOWN = 0x0BFF;

CFReference<CFStringRef> fromBytes(std::string_view bytes, CFStringEncoding encoding) {
    return CFReference<CFStringRef>(
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
        {UTF8, "\xEF\xBB\xBF\xEF\xBB\xBF", u"\uFEFF"},
        {UTF8, "a\xEF\xBB\xBF", u"a\uFEFF"},
        {UTF8, "a\0b"s, {u"a\0b", 3}},
        {UTF8, "\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        {UTF32, "a\0\0\0\xE9\0\0\0"s, u"a\u00E9"},
        {UTF32, "\0\xF6\x01\0"s, u"\U0001F600"},
        {UTF32, "\xFF\xFE\0\0a\0\0\0"s, u"\uFEFFa"},
        {UTF16, "\xFF\xFE\x61\0"s, u"a"},
        {UTF16, "\xFE\xFF\0a\xD8\x3D\xDE\0"s, u"a\U0001F600"},
    };
    for (const auto& c : cases) {
        const auto string = fromBytes(c.bytes, c.encoding);
        ASSERT_TRUE(string) << testing::PrintToString(c.bytes);
        EXPECT_EQ(units(string.get()), c.expected) << testing::PrintToString(c.bytes);
    }
}

TEST(CFString, RefusesWhatIsNoText) {
    const struct {
        CFStringEncoding encoding;
        const char* why;
        std::vector<std::string> texts;
    } cases[] = {
        {UTF8, "no UTF-8", {"abc\xC3(", "\xED\xA0\xBD\xED\xB8\x80", "\xF0\x8F\xBF\xBF", "\xF8\x88\x80\x80\x80"}},
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
        }
    }
    EXPECT_EQ(CFStringCreateWithCString(kCFAllocatorDefault, nullptr, UTF8), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(kCFAllocatorDefault, "a\xFF", UTF8), nullptr);
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
    EXPECT_EQ(std::u16string({middle[0], middle[1]}), u"ef");
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
        {u"\u20AC", UTF8, 4, "\xE2\x82\xAC\0"s},
        {u"\u20AC", UTF8, 3, ""},
        {u"\uFEFFa", UTF8, 5, "\xEF\xBB\xBF\x61\0"s},
        {{u"a\0b", 3}, UTF8, 4, "a\0b\0"s},
        {{u'a', 0xD83D}, UTF8, 99, ""},
        {u"\u20AC", MAC_ROMAN, 2, "\xDB\0"s},
        {u"\u20AC", MAC_ROMAN, 1, ""},
        {u"a\uFF21", MAC_ROMAN, 99, ""},
        {u"a\u00AD", MAC_ROMAN, 99, ""},
        {u"\u200Ba", ASCII, 99, ""},
        {u"\uFEFF", MAC_ROMAN, 99, ""},
        {u"\u0080", ASCII, 50, ""},
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

const CFStringRef MADE_AT_START = CFSTR("made at start");

TEST(CFString, ConstantsAreOneObjectForOneTextAndOutliveEveryRelease) {
    for (int i = 0; i < 10; ++i) {
        CFRelease(MADE_AT_START);
    }
    EXPECT_EQ(CFSTR("made at start"), MADE_AT_START);
    EXPECT_EQ(units(CFSTR("caf\xC3\xA9")), u"caf\u00E9");
}

}  // namespace
