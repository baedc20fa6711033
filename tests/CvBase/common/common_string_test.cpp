#include "CvBase/common/common_string.h"

#include <memory>

#include "tests/support/Text.h"

using Position = checked_value<unsigned int>;

namespace {

using namespace test;

static_assert(std::is_nothrow_copy_constructible_v<String> && std::is_nothrow_move_assignable_v<String>);

TEST(String, ConstructsNullEmptyOrBytes) {
    const char* const null = nullptr;
    // clang-format off
    const struct { const char* what; String text; MaybeBytes bytes; } rows[] = {
        {"default", String(), NONE}, {"nullptr", String(nullptr), NONE}, {"null pointer", String(null), NONE},
        {"null and a length", String(null, 3), NONE}, {"empty", String(""), ""}, {"text", String("abc"), "abc"},
        {"bytes unchanged", String("\xC3\xFF\x80"), "\xC3\xFF\x80"}, {"cut", String("abcdef", 3), "abc"},
        {"shorter than asked", String("ab", 10), "ab"}, {"cut to nothing", String("abc", 0), ""},
        {"empty with a length", String("", 3), ""}, {"longest", String("ab", 0xFFFFFFFF), "ab"},
        {"byte", String('x'), "x"}, {"NUL byte", String('\0'), "\0"s}, {"Char", String(Char('\xE9')), "\xE9"},
        {"line feed", String::GetPlatformLinefeed(), "\n"},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(bytesOf(row.text), row.bytes) << row.what;
        EXPECT_EQ(row.text.IsEmpty(), row.bytes.value_or("").empty()) << row.what;
    }
    EXPECT_STREQ(String().CStr(), "");
    EXPECT_EQ(String().UseCount(), 1U);
}

TEST(String, ReadsNothingBehindTheLengthItIsGiven) {
    const std::unique_ptr<char[]> name(new char[3]{'a', 'b', 'c'});
    EXPECT_EQ(String(name.get(), 3), "abc");
    EXPECT_EQ(String(name.get() + 3, 0), "");
}

TEST(String, CopiesShareAndAssignmentsRelease) {
    String a("abc");
    String b(a);
    EXPECT_EQ(a.CStr(), b.CStr());
    EXPECT_TRUE(a.SharesTextWith(b));
    EXPECT_EQ(a.UseCount(), 2U);
    const String& same = a;
    a = same;
    a = b;
    EXPECT_EQ(a.UseCount(), 2U);
    b = "abc";
    EXPECT_FALSE(a.SharesTextWith(b));
    EXPECT_EQ(a.UseCount(), 1U);
    b = b.CStr() + 1;
    EXPECT_EQ(b, "bc") << "from its own text";
    EXPECT_EQ(b.Assign(b.CStr() + 1, 5), "c");
    b = static_cast<const char*>(nullptr);
    EXPECT_TRUE(b.IsNull());
    EXPECT_FALSE(String().SharesTextWith(String()));

    b = std::move(a);
    EXPECT_EQ(b, "abc");
    a = "again";
    EXPECT_EQ(b, "abc");
}

TEST(String, AppendingToNothingShares) {
    const String b("b");
    for (String a : {String(), String("")}) {
        a += b;
        EXPECT_TRUE(a.SharesTextWith(b));
        a += String();
        a += String("");
        EXPECT_TRUE(a.SharesTextWith(b));
    }
    String a("a");
    a += b;
    a += '\0';
    a += "c";
    EXPECT_EQ(bytesOf(a), "ab\0c"s);
    EXPECT_EQ(bytesOf(a + a), "ab\0cab\0c"s);
    EXPECT_EQ(bytesOf(a + "d" + 'e'), "ab\0cde"s);
    EXPECT_TRUE((String() + static_cast<const char*>(nullptr)).IsNull());

    String empty("");
    empty += String();
    EXPECT_FALSE(empty.IsNull());
}

TEST(String, ResizeCutsPadsAndBlanksACutSequence) {
    // clang-format off
    const struct { MaybeBytes text; unsigned int length; bool keepUtf8Whole; MaybeBytes result; } rows[] = {
        {"a\xC3\xA9", 3, true, "a\xC3\xA9"}, {"a\xC3\xA9", 2, true, "a\0"s}, {"a\xC3\xA9", 2, false, "a\xC3"},
        {"ab", 5, false, "ab\0\0\0"s}, {"ab", 0, true, ""}, {"ab", 0, false, ""}, {NONE, 0, true, ""}, {NONE, 2, true, "\0\0"s},
        {"\xE2\x82\xAC", 2, true, "\0\0"s}, {"\xF0\x9F\x98\x80", 3, true, "\0\0\0"s}, {"\xF0\x9F\x98\x80", 4, true, "\xF0\x9F\x98\x80"},
        {"\xF8\x80\x80\x80\x80", 4, true, "\0\0\0\0"s}, {"\xFC\x80\x80\x80\x80\x80", 5, true, "\0\0\0\0\0"s},
        {"\xFC\x80\x80\x80\x80\x80", 6, true, "\xFC\x80\x80\x80\x80\x80"},
        {"\xFE\x80\x80\x80\x80\x80\x80", 6, true, "\0\0\0\0\0\0"s}, {"\xFF\x80\x80\x80\x80\x80\x80", 7, true, "\xFF\x80\x80\x80\x80\x80\x80"},
        {"\xFF", 1, true, "\0"s}, {"\x80\x80\x80", 2, true, "\x80\x80"}, {"\xC3\xA9\x80\x80", 4, true, "\xC3\xA9\x80\x80"},
        // Padding makes up for the missing bytes of a sequence.
        {"\xC3", 2, true, "\xC3\0"s}, {"\xC3\xE2", 3, true, "\xC3\0\0"s}, {"a\0\xC3"s, 3, true, "a\0\0"s},
    };
    // clang-format on
    for (const auto& row : rows) {
        String text = makeText(row.text);
        text.Resize(row.length, row.keepUtf8Whole);
        EXPECT_EQ(bytesOf(text), row.result) << PrintToString(row.text) << " to " << row.length;
    }
}

TEST(String, TruncateOnlyShortens) {
    String text("abc\xC3\xA9");
    const String copy(text);
    text.Truncate(5);
    EXPECT_TRUE(text.SharesTextWith(copy));
    text.Truncate(4);
    EXPECT_EQ(bytesOf(text), "abc\0"s);
}

/// Expects of each comparison of `a` and `b`, either of which may be a String, what the sign of `order` says.
template <typename A, typename B>
void expectOrder(const A& a, const B& b, int order) {
    EXPECT_EQ(a == b, order == 0);
    EXPECT_EQ(a != b, order != 0);
    EXPECT_EQ(a < b, order < 0);
    EXPECT_EQ(a <= b, order <= 0);
    EXPECT_EQ(a > b, order > 0);
    EXPECT_EQ(a >= b, order >= 0);
}

TEST(StringComparison, OrdersAsBytesUpToTheFirstNul) {
    // clang-format off
    const struct { MaybeBytes a, b; int order; } rows[] = {
        {NONE, NONE, 0}, {NONE, "", 0}, {"", "", 0}, {NONE, "\0x"s, 0}, {"ab", "ab\0c"s, 0}, {"abc", "abc", 0},
        {NONE, "a", -1}, {"", "\x01", -1}, {"ab", "abc", -1}, {"abc", "abd", -1}, {"B", "a", -1},
        {"z", "\xC3\xA9", -1}, {"\x7F", "\x80", -1}, {"\xEF\xBF\xBD", "\xF0\x90\x80\x80", -1},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(PrintToString(row.a) + " and " + PrintToString(row.b));
        const String a = makeText(row.a), b = makeText(row.b);
        expectOrder(a, b, row.order);
        expectOrder(b, a, -row.order);
        expectOrder(a, b.CStr(), row.order);
        expectOrder(b.CStr(), a, -row.order);
        expectOrder(b, String(b), 0);
        expectOrder(b, b.CStr(), 0);
    }
}

TEST(StringComparison, WithANullPointerIsAlwaysFalse) {
    const char* const null = nullptr;
    for (const String& text : {String(), String(""), String("a")}) {
        EXPECT_FALSE(text == null || text < null || text <= null || text > null || text >= null);
        EXPECT_FALSE(null == text || null < text || null <= text || null > text || null >= text);
        EXPECT_TRUE(text != null && null != text);
    }
}

TEST(StringFind, ByteFromEitherEnd) {
    // clang-format off
    struct Row { MaybeBytes text; char c; Position start; bool caseSensitive; Position found; };
    const Row forwards[] = {
        {"abc", 'c', 0, true, 2}, {"abc", 'c', 2, true, 2}, {"abc", 'c', 3, true, {}}, {"abc", 'B', 0, false, 1},
        {"aBc", 'b', 0, false, 1}, {"abc", 'B', 0, true, {}}, {"aba", 'a', 1, true, 2}, {"abc", 'a', 0xFFFFFFFF, true, {}},
        {"ab\0c"s, 'c', 0, true, 3}, {"ab\0c"s, '\0', 0, true, 2}, {"ab\0C"s, 'c', 0, false, 3}, {"", '\0', 0, true, {}},
        {NONE, 'a', 0, true, {}}, {NONE, 'a', 0, false, {}},
        {"\xC3\xA9\xE9", '\xE9', 0, true, 2}, {"\xC3\xC9", '\xE9', 0, false, {}}, {"@[`{", '`', 0, false, 2},
    };
    const Row backwards[] = {
        {"aba", 'a', {}, true, 2}, {"aba", 'a', 1, true, 0}, {"aba", 'a', 2, true, 2}, {"aba", 'a', 0, true, 0},
        {"abc", 'x', 7, true, {}}, {"abc", 'c', 3, true, {}}, {"abc", 'c', 0xFFFFFFFF, true, {}}, {"abc", 'x', {}, true, {}},
        {"abAc", 'a', {}, false, 2}, {"abAc", 'a', {}, true, 0}, {"a\0b\0"s, '\0', {}, true, 3},
        {"", 'a', {}, true, {}}, {"", 'a', 0, true, {}}, {NONE, 'a', {}, true, {}},
    };
    // clang-format on
    for (const Row& row : forwards) {
        EXPECT_EQ(makeText(row.text).Find(row.c, row.start.Value(), row.caseSensitive), row.found)
            << PrintToString(row.text) << " from " << row.start.Value();
    }
    for (const Row& row : backwards) {
        EXPECT_EQ(makeText(row.text).FindRev(row.c, row.start, row.caseSensitive), row.found)
            << PrintToString(row.text);
    }
}

TEST(StringFind, Text) {
    const std::string LONG(400, 'x');
    // clang-format off
    const struct { MaybeBytes text; const char* needle; unsigned int start; bool caseSensitive; Position found; } rows[] = {
        {"abc", "bc", 0, true, 1}, {"abc", "bd", 0, true, {}}, {"abc", "", 1, true, 1}, {"abc", "", 3, true, {}},
        {"abab", "ab", 1, true, 2}, {"abc", "BC", 0, true, {}}, {"abc", "abcd", 0, true, {}},
        {"abc", "BC", 0, false, 1}, {"aBC", "bc", 1, false, 1}, {"abc", "", 2, false, 2}, {"abc", nullptr, 2, false, 2},
        {"ab\0cdef"s, "cd", 0, true, {}}, {"ab\0cdef"s, "cd", 2, true, {}}, {"ab\0cdef"s, "cd", 3, true, 3},
        {"ab\0cdef"s, "", 2, true, 2},
        // Folded, the text ends at its NUL: nothing is found after it, and nothing is read there.
        {"ab\0cdef"s, "cd", 3, false, {}}, {"ab\0cdef"s, "", 2, false, 2}, {"ab\0cdef"s, "", 3, false, {}},
        {"ab\0cdef"s, "", 6, false, {}}, {"\0cdef"s, "c", 0, false, {}}, {"\0cdef"s, "c", 1, false, {}},
        {"", "", 0, true, {}}, {NONE, "", 0, true, {}}, {NONE, "a", 0, false, {}},
        {LONG + "\0cd"s, "cd", 0, true, {}}, {LONG + "\0cd"s, "cd", 400, true, {}}, {LONG + "\0cd"s, "cd", 401, true, 401},
        {LONG + "cd\0"s, "cd", 7, true, 400}, {LONG + "cd", "CD", 7, false, 400}, {LONG + "cd", "", 7, true, 7},
        {"\0"s + LONG + "cd", "cd", 0, true, {}}, {"\0"s + LONG + "cd", "cd", 1, true, 401},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(makeText(row.text).Find(row.needle, row.start, row.caseSensitive), row.found)
            << PrintToString(row.text) << " from " << row.start;
    }
}

TEST(StringFind, BeginningAndEnd) {
    // clang-format off
    const struct { MaybeBytes text, part; bool caseSensitive, begins, ends; } rows[] = {
        {"abcab", "ab", true, true, true}, {"abc", "ab", true, true, false}, {"abc", "bc", true, false, true},
        {"abc", "AB", true, false, false}, {"abc", "AB", false, true, false}, {"ABC", "bc", false, false, true},
        {"abc", "abc", true, true, true}, {"abc", "abcd", true, false, false}, {"abc", "xabc", false, false, false},
        {"abc", "", true, true, true}, {"abc", NONE, false, true, true}, {NONE, NONE, true, true, true},
        {NONE, "", false, true, true}, {"", "a", true, false, false},
        {"a\0b"s, "a\0c"s, true, true, true}, {"a\0b"s, "a\0"s, true, true, false}, {"xa\0b"s, "A\0b"s, false, false, true},
        {"\xC3\xA9", "\xC3\x89", false, false, false},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(PrintToString(row.text) + " and " + PrintToString(row.part));
        EXPECT_EQ(makeText(row.text).BeginsWith(makeText(row.part), row.caseSensitive), row.begins);
        EXPECT_EQ(makeText(row.text).EndsWith(makeText(row.part), row.caseSensitive), row.ends);
    }
}

TEST(StringPieces, LeftRightMid) {
    const String null;
    const String empty("");
    const String abc("abc");
    const String nul = makeText("a\0b"s);
    // clang-format off
    const struct { const char* what; String piece; MaybeBytes bytes; } rows[] = {
        {"left of null", null.Left(2), NONE}, {"right of null", null.Right(0), NONE}, {"mid of null", null.Mid(0), NONE},
        {"left of empty", empty.Left(2), ""}, {"right of empty", empty.Right(2), ""}, {"mid of empty", empty.Mid(0), NONE},
        {"left none", abc.Left(0), ""}, {"left two", abc.Left(2), "ab"}, {"left all", abc.Left(10), "abc"},
        {"right none", abc.Right(0), ""}, {"right two", abc.Right(2), "bc"}, {"right all", abc.Right(0xFFFFFFFF), "abc"},
        {"mid rest", abc.Mid(1), "bc"}, {"mid clamped", abc.Mid(1, 10), "bc"}, {"mid clamped, no wrap", abc.Mid(2, 0xFFFFFFFF), "c"},
        {"mid one", abc.Mid(1, 1), "b"}, {"mid none", abc.Mid(1, 0), ""}, {"mid at the end", abc.Mid(3), NONE},
        {"mid at the end, none", abc.Mid(3, 0), NONE}, {"mid far past the end", abc.Mid(0xFFFFFFFF, 2), NONE},
        {"left over NUL", nul.Left(2), "a\0"s}, {"right over NUL", nul.Right(2), "\0b"s}, {"mid over NUL", nul.Mid(1), "\0b"s},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(bytesOf(row.piece), row.bytes) << row.what;
    }
    EXPECT_FALSE(abc.Left(3).SharesTextWith(abc));
}

}  // namespace
