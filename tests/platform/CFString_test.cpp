#include "tests/support/CFSupport.h"
#include "tests/support/Test.h"

namespace {

using namespace test;

constexpr CFStringEncoding UTF8 = kCFStringEncodingUTF8, UTF16 = kCFStringEncodingUTF16,
                           UTF32 = kCFStringEncodingUTF32LE, MAC_ROMAN = kCFStringEncodingMacRoman,
                           ASCII = kCFStringEncodingASCII, UNKNOWN = 0x0BFF;

CFReference<CFStringRef> fromBytes(std::string_view bytes, CFStringEncoding encoding) {
    return CFReference<CFStringRef>(
        CFStringCreateWithBytesNoCopy(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                      static_cast<CFIndex>(bytes.size()), encoding, false, kCFAllocatorNull));
}

TEST(CFString, ReadsValidTextAndRefusesInvalidBytes) {
    const std::optional<std::u16string> NONE;
    // clang-format off
    const struct { CFStringEncoding encoding; std::string bytes; std::optional<std::u16string> expected; } rows[] = {
        {UTF8, "", u""}, {UTF8, "\xEF\xBB\xBF\xEF\xBB\xBF", u"\uFEFF"}, {UTF8, "a\xEF\xBB\xBF", u"a\uFEFF"},
        {UTF8, "a\0b"s, std::u16string(u"a\0b", 3)}, {UTF8, "\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        {UTF8, "abc\xC3(", NONE}, {UTF8, "\xED\xA0\xBD\xED\xB8\x80", NONE}, {UTF8, "\xF0\x8F\xBF\xBF", NONE}, {UTF8, "\xF8\x88\x80\x80\x80", NONE},
        {ASCII, "a\x7F", u"a\x7F"}, {ASCII, "a\x80", NONE}, {UNKNOWN, "a", NONE},
        {UTF32, "a\0\0\0\xE9\0\0\0"s, u"a\u00E9"}, {UTF32, "\0\xF6\x01\0"s, u"\U0001F600"}, {UTF32, "\xFF\xFE\0\0a\0\0\0"s, u"\uFEFFa"},
        {UTF32, "a\0\0"s, NONE}, {UTF32, "\0\xD8\0\0"s, NONE}, {UTF32, "\xFF\xDF\0\0"s, NONE}, {UTF32, "\0\0\x11\0"s, NONE}, {UTF32, "\xFF\xFF\xFF\xFF"s, NONE},
        {UTF16, "\xFF\xFE\x61\0"s, u"a"}, {UTF16, "\xFE\xFF\0a\xD8\x3D\xDE\0"s, u"a\U0001F600"},
        {UTF16, "a\0b"s, NONE}, {UTF16, "\x3D\xD8"s, NONE}, {UTF16, "\x3D\xD8\x61\0"s, NONE}, {UTF16, "\0\xDE\x3D\xD8"s, NONE},
    };
    // clang-format on
    for (const auto& row : rows) {
        const auto string = fromBytes(row.bytes, row.encoding);
        EXPECT_EQ(string ? std::optional(units(string.get())) : NONE, row.expected)
            << row.encoding << " " << PrintToString(row.bytes);
    }
    EXPECT_EQ(CFStringCreateWithCString(kCFAllocatorDefault, nullptr, UTF8), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(kCFAllocatorDefault, "a\xFF", UTF8), nullptr);
    for (const CFIndex count : {1, -1}) {
        EXPECT_EQ(CFStringCreateWithCharacters(kCFAllocatorDefault, nullptr, count), nullptr);
        EXPECT_EQ(CFStringCreateWithBytesNoCopy(kCFAllocatorDefault, nullptr, count, UTF8, false, kCFAllocatorNull),
                  nullptr);
    }
}

TEST(CFString, KeepsItsUnitsAsTheyAreInMemoryOfItsOwn) {
    for (const std::u16string& expected :
         {std::u16string(u"a\0b\0", 4), std::u16string{0xDC00, 0xD800, u'a'}, std::u16string(u"\uFEFFa"),
          std::u16string{0xFFFE, u'a'}, std::u16string(300, u'\u4E00')}) {
        std::u16string memory = expected;
        const auto string = makeString(memory);
        memory.assign(memory.size(), u'x');
        EXPECT_EQ(units(string.get()), expected) << PrintToString(expected);
    }
    std::string bytes = "before";
    const auto wrapped = fromBytes(bytes, UTF8);
    bytes = "after!";
    EXPECT_EQ(units(wrapped.get()), u"before");
    UniChar middle[2] = {};
    CFStringGetCharacters(wrapped.get(), CFRangeMake(1, 2), middle);
    EXPECT_EQ(std::u16string({middle[0], middle[1]}), u"ef");
    for (const CFRange range : {CFRangeMake(-1, 1), CFRangeMake(0, -1), CFRangeMake(7, 0), CFRangeMake(5, 2)}) {
        EXPECT_DEATH(CFStringGetCharacters(wrapped.get(), range, middle), "the range is not inside the string");
    }
}

TEST(CFString, OutputIsAllOrNothing) {
    const std::optional<std::string> REFUSED;
    // clang-format off
    const struct { std::u16string units; CFStringEncoding encoding; CFIndex size; std::optional<std::string> expected; } rows[] = {
        {u"", UTF8, 1, "\0"s}, {u"", UTF8, 0, REFUSED}, {u"\u20AC", UTF8, 4, "\xE2\x82\xAC\0"s}, {u"\u20AC", UTF8, 3, REFUSED},
        {u"\uFEFFa", UTF8, 5, "\xEF\xBB\xBF\x61\0"s}, {{u"a\0b", 3}, UTF8, 4, "a\0b\0"s}, {{u'a', 0xD83D}, UTF8, 99, REFUSED},
        {u"\u20AC", MAC_ROMAN, 2, "\xDB\0"s}, {u"\u20AC", MAC_ROMAN, 1, REFUSED}, {u"a\uFF21", MAC_ROMAN, 99, REFUSED},
        {u"a\u00AD", MAC_ROMAN, 99, REFUSED}, {u"\u200Ba", ASCII, 99, REFUSED}, {u"\uFEFF", MAC_ROMAN, 99, REFUSED},
        {u"\u0080", ASCII, 50, REFUSED}, {u"abc", UNKNOWN, 99, REFUSED},
    };
    // clang-format on
    for (const auto& row : rows) {
        std::string buffer(static_cast<std::size_t>(row.size), 'x');
        const auto string = makeString(row.units);
        const bool written = CFStringGetCString(string.get(), buffer.data(), row.size, row.encoding);
        EXPECT_EQ(written ? std::optional(buffer) : REFUSED, row.expected) << PrintToString(row.units);
    }
}

/// ASCII is converted in blocks, and what lies between the blocks apart from them.
TEST(CFString, ConvertsUTF8BetweenASCIIOfEveryLength) {
    const std::optional<std::u16string> NONE;
    // clang-format off
    const struct { std::string bytes; std::optional<std::u16string> units; } rows[] = {
        {"\x7F", u"\x7F"}, {"\xC2\x80", u"\u0080"}, {"\xE2\x82\xAC", u"\u20AC"}, {"\xF0\x9F\x98\x80", u"\U0001F600"},
        {"\xC3", NONE}, {"\xA9", NONE}, {"\xE2\x82", NONE}, {"\xF0\x9F\x98", NONE}, {"\xC1\xBF", NONE}, {"\xED\xA0\x80", NONE},
    };
    // clang-format on
    for (const auto& row : rows) {
        for (std::size_t length = 0; length < 121; ++length) {
            const std::size_t before = length % 40, after = length / 3;
            const std::string bytes = std::string(before, 'a') + row.bytes + std::string(after, 'b') + row.bytes;
            const auto decoded = fromBytes(bytes, UTF8);
            ASSERT_EQ(bool(decoded), row.units.has_value()) << PrintToString(bytes);
            if (decoded) {
                const std::u16string between(after, u'b');
                EXPECT_EQ(units(decoded.get()), std::u16string(before, u'a') + *row.units + between + *row.units);
                std::string encoded(bytes.size() + 1, 'x');
                const auto size = static_cast<CFIndex>(encoded.size());
                EXPECT_FALSE(CFStringGetCString(decoded.get(), encoded.data(), size - 1, UTF8));
                EXPECT_TRUE(CFStringGetCString(decoded.get(), encoded.data(), size, UTF8));
                EXPECT_EQ(encoded, bytes + '\0');
            }
            const auto unpaired = makeString(std::u16string(before, u'a') + u'\xD83D' + std::u16string(after, u'b'));
            std::string refused(4 * length + 8, 'x');
            EXPECT_FALSE(CFStringGetCString(unpaired.get(), refused.data(), CFIndex(refused.size()), UTF8));
        }
    }
}

const CFStringRef MADE_AT_START = CFSTR("made at start");

TEST(CFString, ConstantsAreOneObjectForOneText) {
    EXPECT_EQ(CFSTR("made at start"), MADE_AT_START);
    EXPECT_EQ(units(CFSTR("caf\xC3\xA9")), u"caf\u00E9");
}

}  // namespace
