#include <memory>

#include "tests/support/Text.h"

using Units = std::optional<std::u16string>;

namespace {

using namespace test;

constexpr unsigned int UTF8 = 1;
constexpr unsigned int MAC_ROMAN = 2;

/// A copy in which nothing follows the terminating 0, so that the address sanitizer sees a read past it.
template <typename Unit, typename Text>
std::unique_ptr<Unit[]> exactly(const Text& text) {
    std::unique_ptr<Unit[]> units(new Unit[text.size() + 1]);
    std::memcpy(units.get(), text.c_str(), (text.size() + 1) * sizeof(Unit));
    return units;
}

String fromUtf16(const std::u16string& text, unsigned int encoding = UTF8) {
    return String(exactly<unsigned short>(text).get(), encoding);
}

String fromWide(const std::wstring& text) {
    return String(exactly<wchar_t>(text).get());
}

Units unicodeOf(const String& text, unsigned int encoding = UTF8) {
    const shared_array<unsigned short> units = text.Unicode(encoding);
    if (units.get() == nullptr) {
        return {};
    }
    std::u16string copy;
    for (std::size_t i = 0; units[i] != 0; ++i) {
        copy += static_cast<char16_t>(units[i]);
    }
    return copy;
}

TEST(StringUnicode, ConvertsFromUtf16) {
    // clang-format off
    const struct { std::u16string text; unsigned int encoding; MaybeBytes bytes; } rows[] = {
        {u"", UTF8, ""}, {u"abc", UTF8, "abc"}, {u"\u00E9\u20AC\U0001F600", UTF8, "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
        {u"\u00E9", 0, "\xC3\xA9"}, {u"\u00E9", 7, "\xC3\xA9"}, {u"\uFEFFa", UTF8, "\xEF\xBB\xBF" "a"},
        {u"a\xD83D", UTF8, NONE}, {u"\xDE00\xD83D", UTF8, NONE},
        {u"", MAC_ROMAN, ""}, {u"\u00E9\u20AC\uF8FF", MAC_ROMAN, "\x8E\xDB\xF0"}, {u"a\u0151", MAC_ROMAN, NONE},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(bytesOf(fromUtf16(row.text, row.encoding)), row.bytes);
    }
    EXPECT_TRUE(String(static_cast<const unsigned short*>(nullptr)).IsNull());
}

TEST(StringUnicode, ConvertsFromWideText) {
    // clang-format off
    const struct { std::wstring text; MaybeBytes bytes; } rows[] = {
        {L"", ""}, {L"abc", "abc"}, {L"\u00E9\u20AC", "\xC3\xA9\xE2\x82\xAC"}, {L"\uFEFFa", "\xEF\xBB\xBF" "a"},
        {{L'a', wchar_t(0xD800)}, NONE}, {{L'a', wchar_t(0x110000)}, NONE}, {{L'a', wchar_t(-1)}, NONE},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(bytesOf(fromWide(row.text)), row.bytes);
    }
}

TEST(StringUnicode, WideTextHasRoomForThreeBytesAUnit) {
    for (unsigned int n = 1; n <= 10; ++n) {
        const std::wstring wide(n, L'\U0001F600');
        EXPECT_TRUE(fromWide(wide).IsNull()) << n;
        EXPECT_EQ(fromWide(wide + std::wstring(std::size_t{2} * n, L'a')).Length(), 6 * n);
    }
    EXPECT_EQ(fromWide(std::wstring(5000, L'\u20AC')).Length(), 15000U);
}

TEST(StringUnicode, RefusesAHundredThousandUnits) {
    for (std::size_t units = 99992; units <= 100008; ++units) {
        const bool refused = units >= 100000;
        EXPECT_EQ(fromUtf16(std::u16string(units, u'x')).IsNull(), refused) << units;
        EXPECT_EQ(fromWide(std::wstring(units, L'x')).IsNull(), refused) << units;
    }
    EXPECT_EQ(fromUtf16(std::u16string(99999, u'\u20AC')).Length(), 299997U);
    // Without a terminator after them: unit 100000 is not looked at.
    const std::vector<unsigned short> unterminated(100000, u'x');
    EXPECT_TRUE(String(unterminated.data()).IsNull());

    EXPECT_EQ(unicodeOf(makeText(std::string(100000, 'x'))), std::u16string(100000, u'x'));
    EXPECT_EQ(unicodeOf(makeText(std::string(100001, 'x'))), std::nullopt);
}

TEST(StringUnicode, ConvertsToUtf16) {
    // clang-format off
    const struct { MaybeBytes bytes; unsigned int encoding; Units units; } rows[] = {
        {NONE, UTF8, u""}, {"", UTF8, u""}, {"\0a"s, UTF8, u""}, {"ab\0c"s, UTF8, u"ab"}, {NONE, MAC_ROMAN, u""},
        {"\xC3\xA9\xF0\x9F\x98\x80", UTF8, u"\u00E9\U0001F600"}, {"\xEF\xBB\xBF" "a", UTF8, u"a"},
        {"\xE9", UTF8, {}}, {"\xC0\xAF", UTF8, {}}, {"\xED\xA0\x80", UTF8, {}}, {"\xF4\x90\x80\x80", UTF8, {}}, {"\xE2\x82", UTF8, {}},
        {"\x8E\xDB\xF0", MAC_ROMAN, u"\u00E9\u20AC\uF8FF"},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(unicodeOf(makeText(row.bytes), row.encoding), row.units) << PrintToString(row.bytes);
    }
    EXPECT_EQ(String("a").Unicode().use_count(), 1U);
}

TEST(StringUnicode, GoesThereAndBack) {
    std::u16string units;
    for (unsigned int c = 1; c < 0x10000; ++c) {
        if (c < 0xD800 || c > 0xDFFF) {
            units += static_cast<char16_t>(c);
        }
    }
    EXPECT_EQ(unicodeOf(fromUtf16(units)), units);
}

}  // namespace
