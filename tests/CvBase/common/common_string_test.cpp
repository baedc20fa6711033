#include "CvBase/common/common_string.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "tests/support/Text.h"

using namespace std::string_literals;
using test::bytesOf;
using test::makeText;

using Bytes = std::optional<std::string>;

namespace {

const Bytes NONE;

static_assert(sizeof(String) == 2 * sizeof(void*));
static_assert(std::is_nothrow_copy_constructible_v<String> && std::is_nothrow_move_assignable_v<String>);

TEST(String, ConstructsNullEmptyOrBytes) {
    char const* const null = nullptr;
    // clang-format off
    const struct { char const* what; String text; Bytes bytes; } rows[] = {
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
    b = static_cast<char const*>(nullptr);
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
    unsigned int const before = b.UseCount();
    a += b;
    EXPECT_EQ(b.UseCount(), before);
    a += '\0';
    a += "c";
    EXPECT_EQ(bytesOf(a), "ab\0c"s);
    EXPECT_EQ(bytesOf(a + a), "ab\0cab\0c"s);
    EXPECT_EQ(bytesOf(a + "d" + 'e'), "ab\0cde"s);
    EXPECT_TRUE((String() + static_cast<char const*>(nullptr)).IsNull());

    String empty("");
    empty += String();
    EXPECT_FALSE(empty.IsNull());
}

TEST(String, EveryChangeTakesANewText) {
    String text("abcdef");
    char const* const before = text.CStr();
    const std::string copyOfBefore = before;
    const String holder(text);  // keeps the old text alive, so that a new one cannot lie in its place
    for (const auto& change : {+[](String& s) { s += "x"; }, +[](String& s) { s.Resize(3); },
                               +[](String& s) { s.Truncate(2); }, +[](String& s) { s.Resize(2, true); }}) {
        String changed(holder);
        change(changed);
        EXPECT_FALSE(changed.SharesTextWith(holder));
        EXPECT_EQ(changed.UseCount(), 1U);
        EXPECT_EQ(holder, copyOfBefore.c_str());
    }
}

TEST(String, ResizeCutsPadsAndBlanksACutSequence) {
    // clang-format off
    const struct { Bytes text; unsigned int length; bool keepUtf8Whole; Bytes result; } rows[] = {
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
        EXPECT_EQ(bytesOf(text), row.result) << testing::PrintToString(row.text) << " to " << row.length;
    }
}

TEST(String, TruncateOnlyShortens) {
    String text("abc\xC3\xA9");
    const String copy(text);
    text.Truncate(5);
    text.Truncate(10);
    EXPECT_TRUE(text.SharesTextWith(copy));
    text.Truncate(4);
    EXPECT_EQ(bytesOf(text), "abc\0"s);
    String null;
    null.Truncate(0);
    EXPECT_TRUE(null.IsNull());
}

TEST(String, CopiesMayBeUsedOnSeveralThreads) {
    const String original("shared text");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([mine = original] {
            for (int step = 0; step < 5000; ++step) {
                String copy(mine);
                const String another = copy + "!";
                copy += another;
                EXPECT_EQ(copy.Length(), 2 * mine.Length() + 1);
                copy = mine;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(original, "shared text");
    threads.clear();
    EXPECT_EQ(original.UseCount(), 1U);
}

}  // namespace
