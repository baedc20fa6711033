#include "tests/support/FailingAllocations.h"
#include "tests/support/Text.h"

using Count = checked_value<unsigned int>;

namespace {

using namespace test;

TEST(StringInsert, AtEveryPlace) {
    // clang-format off
    const struct { MaybeBytes text; unsigned int pos; MaybeBytes inserted, result; } rows[] = {
        {"ab", 0, "x", "xab"}, {"ab", 1, "x", "axb"}, {"ab", 2, "x", "abx"}, {"ab", 10, "x", "abx"},
        {"ab", 0xFFFFFFFF, "x", "abx"}, {"a\0b"s, 2, "\0"s, "a\0\0b"s}, {"ab", 1, "", "ab"}, {"ab", 1, NONE, "ab"},
        {NONE, 0, "x", "x"}, {NONE, 5, NONE, NONE}, {"", 0, NONE, ""}, {"", 3, "x", "x"},
    };
    // clang-format on
    for (const auto& row : rows) {
        String text = makeText(row.text);
        EXPECT_EQ(&text.Insert(row.pos, makeText(row.inserted)), &text);
        EXPECT_EQ(bytesOf(text), row.result) << PrintToString(row.text) << " at " << row.pos;
    }
}

TEST(StringRemove, ClampsAndWrapsAt32Bits) {
    // clang-format off
    const struct { MaybeBytes text; unsigned int pos; Count count; MaybeBytes result; } rows[] = {
        {"abc", 1, {}, "a"}, {"abc", 1, 1, "ac"}, {"abc", 5, 1, "abc"}, {"abc", 3, {}, "abc"}, {"abc", 1, 0, "abc"},
        {"abc", 0, {}, ""}, {"abc", 0, 3, ""}, {"abc", 1, 2, "a"}, {"abc", 1, 100, "a"}, {"a\0bc"s, 1, 2, "ac"},
        {"abcde", 2, 0xFFFFFFFF, "abbcde"}, {"abcde", 3, 0xFFFFFFFD, "abcabcde"}, {"abcde", 4, 0xFFFFFFFB, "abcd"},
        {NONE, 0, {}, NONE}, {NONE, 0, 3, NONE}, {"", 0, {}, ""},
    };
    // clang-format on
    for (const auto& row : rows) {
        String text = makeText(row.text);
        EXPECT_EQ(&text.Remove(row.pos, row.count), &text);
        EXPECT_EQ(bytesOf(text), row.result) << PrintToString(row.text) << " at " << row.pos;
    }
}

TEST(StringEditing, TakesItselfAsTheArgument) {
    String text("ab");
    text.Insert(1, text);
    EXPECT_EQ(text, "aabb");
    text += text;
    EXPECT_EQ(text, "aabbaabb");
    EXPECT_EQ(text.Replace(text, text + text), "aabbaabbaabbaabb");
    EXPECT_EQ(String::Join(text, {text, text}), "aabbaabbaabbaabbaabbaabb");
}

TEST(StringCase, MapsAsciiOnly) {
    // clang-format off
    const struct { MaybeBytes text, upper, lower; } rows[] = {
        {"aZ@[`{09", "AZ@[`{09", "az@[`{09"}, {"\xC3\xA9\xC9", "\xC3\xA9\xC9", "\xC3\xA9\xC9"}, {"aB\0cD"s, "AB", "ab"},
        {"\0ab"s, NONE, NONE}, {"", "", ""}, {NONE, NONE, NONE},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(bytesOf(makeText(row.text).ToUpper()), row.upper);
        EXPECT_EQ(bytesOf(makeText(row.text).ToLower()), row.lower);
    }
    for (unsigned int length = 0; length < 130; ++length) {
        std::string bytes;
        std::string upper;
        for (unsigned int i = 0; i < length; ++i) {
            const Char c = static_cast<char>((length * 131 + i) % 255 + 1);
            bytes += c;
            upper += c.ToUpper();
        }
        EXPECT_EQ(str(makeText(bytes).ToUpper()), upper);
        EXPECT_EQ(str(makeText(upper).ToLower()), str(makeText(bytes).ToLower()));
    }
    // Upper shares a text that has nothing to map, lower does not.
    for (const String& text : {String(), String("")}) {
        EXPECT_TRUE(text.ToUpper().SharesTextWith(text));
        EXPECT_FALSE(text.ToLower().SharesTextWith(text));
    }
    EXPECT_FALSE(String("A").ToUpper().SharesTextWith("A"));
}

TEST(StringWhiteSpace, StripAndSimplify) {
    // clang-format off
    const struct { MaybeBytes text, stripped, simplified; } rows[] = {
        {NONE, NONE, NONE}, {"", "", ""}, {"   ", "", ""}, {"\t a b \n", "a b", "a b"}, {"  a \tb  ", "a \tb", "a b"},
        {"a b", "a b", "a b"}, {"a\tb", "a\tb", "a b"}, {" a", "a", "a"}, {"a ", "a", "a"}, {"\xA0", "", ""},
        {"a\0 "s, "a\0"s, "a\0"s}, {" \0 "s, "\0"s, "\0"s}, {"\v\f\r\x1F", "\x1F", "\x1F"}, {"a\x85 b", "a\x85 b", "a\x85 b"},
        // The last byte of a-grave is taken for white space; simplifying then blanks the byte that is left of it.
        {"voil\xC3\xA0", "voil\xC3", "voil\0"s}, {"\xC3\xA0", "\xC3", "\0"s}, {"\xC3\xA0 t", "\xC3\xA0 t", "\xC3 t"},
        {"\xE2\x82\xA0 ", "\xE2\x82", "\0\0"s},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(bytesOf(makeText(row.text).StripWhiteSpace()), row.stripped);
        EXPECT_EQ(bytesOf(makeText(row.text).SimplifyWhiteSpace()), row.simplified);
    }
    for (const String& text : {String(), String(""), String("a b")}) {
        EXPECT_TRUE(text.StripWhiteSpace().SharesTextWith(text));
        EXPECT_EQ(text.SimplifyWhiteSpace().SharesTextWith(text), text.IsEmpty());
    }
}

TEST(StringSplit, KeepsEmptyFields) {
    // clang-format off
    const struct { MaybeBytes text; std::vector<MaybeBytes> fields; } rows[] = {
        {"a,,b,", {"a", "", "b", NONE}}, {",a", {"", "a"}}, {"abc", {"abc"}}, {",", {"", NONE}}, {"a,b", {"a", "b"}},
        {"", {""}}, {NONE, {NONE}}, {"a\0,b"s, {"a\0"s, "b"}},
    };
    // clang-format on
    for (const auto& row : rows) {
        std::vector<String> out{String("old")};
        makeText(row.text).Split(',', out);
        std::vector<MaybeBytes> fields;
        fields.reserve(out.size());
        for (const String& field : out) {
            fields.push_back(bytesOf(field));
        }
        EXPECT_EQ(fields, row.fields);
    }
    const String whole("abc");
    std::vector<String> out{String("a,b")};
    out[0].Split(',', out);
    EXPECT_EQ(out, (std::vector<String>{"a", "b"})) << "of an element of the result";
    whole.Split(',', out);
    EXPECT_TRUE(out[0].SharesTextWith(whole));
}

TEST(StringJoin, LeavesOutNothingButEmptyPieces) {
    const String a("a");
    const String comma(",");
    // clang-format off
    const struct { String separator; std::vector<String> parts; MaybeBytes joined; } rows[] = {
        {",", {}, NONE}, {",", {a}, "a"}, {",", {a, "b"}, "a,b"}, {",", {a, "", String(), "b"}, "a,,,b"},
        {String(), {a, "b"}, "ab"}, {",", {""}, NONE}, {"", {"", String()}, NONE}, {",", {String(), ""}, ","},
        {makeText("\0"s), {a, a}, "a\0a"s},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(bytesOf(String::Join(row.separator, row.parts)), row.joined);
    }
    EXPECT_TRUE(String::Join(comma, {a}).SharesTextWith(a));
    EXPECT_TRUE(String::Join("", {String(), a, ""}).SharesTextWith(a));
    EXPECT_TRUE(String::Join(comma, {"", ""}).SharesTextWith(comma));
}

/// Replacing as its definition says, one piece after another.
String replaceByDefinition(const String& source, const String& from, const String& to) {
    if (source.IsEmpty() || from.IsEmpty()) {
        return source;
    }
    const unsigned int n = from.Length();
    String result;
    for (unsigned int i = 0; i < source.Length();) {
        if (i < source.Length() + 1 - n && source.Mid(i, n) == from) {
            result += to;
            i += n;
        } else {
            result += source.CStr()[i++];
        }
    }
    return result;
}

TEST(StringReplace, EqualsItsDefinitionOnRandomBytes) {
    std::mt19937 random(20091);
    const auto randomText = [&random](unsigned int longest) {
        std::string bytes(random() % (longest + 1), '\0');
        for (char& c : bytes) {
            c = "\0ab"[random() % 3];
        }
        return random() % 20 == 0 ? String() : makeText(bytes);
    };
    for (int i = 0; i < 30000; ++i) {
        const String text = randomText(i % 1000 == 0 ? 3000 : 12);
        const String from = randomText(i % 2 == 0 ? 2 : 14);
        const String to = randomText(3);
        const String replaced = text.Replace(from, to);
        ASSERT_EQ(replaced.SharesTextWith(text), from.IsEmpty() && !text.IsEmpty());
        ASSERT_EQ(bytesOf(replaced), bytesOf(replaceByDefinition(text, from, to)))
            << PrintToString(text) << ' ' << PrintToString(from) << ' ' << PrintToString(to);
    }
}

TEST(StringReplaceChar, ReachesBehindANul) {
    // clang-format off
    const struct { MaybeBytes text; char from, to; MaybeBytes result; } rows[] = {
        {"abca", 'a', 'x', "xbcx"}, {"abc", 'x', 'y', "abc"}, {"a\0a"s, 'a', 'b', "b\0b"s}, {"a\0b"s, 'x', 'y', "a"},
        {"ab\0cab"s, 'a', 'x', "xb\0\0x"s}, {"a\0b\0"s, '\0', 'x', "ax\0x"s}, {"aa", 'a', '\0', "\0\0"s}, {"\0a"s, 'b', 'c', ""},
        {"", 'a', 'b', ""}, {NONE, 'a', 'b', ""},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(bytesOf(makeText(row.text).ReplaceChar(row.from, row.to)), row.result);
    }
}

// A pass that is quadratic would take hours, and end with the test's time-out.
TEST(StringEditing, TakesLongTexts) {
    const std::string megabyte(1 << 20, 'a');
    const String text(megabyte.c_str());
    std::vector<String> fields;
    EXPECT_EQ(text.Replace("a", "bb").Length(), 2U << 20);
    text.Split('a', fields);
    EXPECT_EQ(fields.size(), megabyte.size() + 1);
    EXPECT_EQ(String::Join("--", fields).Length(), 2U << 20);
    EXPECT_EQ((String('\0') + text).ReplaceChar('a', 'b').Length(), megabyte.size() + 1);
}

// What memory exhaustion leaves behind: the text as it was, and no leak. Each allocation of each operation fails once.

constexpr const char* LONG_TEXT =
    " A text that no small buffer inside of std::string can hold, with \xC3\xA9, %1 and more ";

TEST(StringMemory, AFailedChangeLeavesTheTextAsItWas) {
    const String other("Another text that is too long for any small buffer, too");
    const std::vector<std::function<void(String&)>> changes = {
        [&](String& s) { s += other; },
        [](String& s) { s += 'x'; },
        [](String& s) { s = LONG_TEXT; },
        [](String& s) { s.Assign(LONG_TEXT, 70); },
        [](String& s) { s.Resize(60); },
        [](String& s) { s.Truncate(50); },
        [&](String& s) { s.Insert(3, other); },
        [](String& s) { s.Remove(3, 5); },
        [&](String& s) { s = s.Arg(other).Arg(7, 10, 60); },
        [&](String& s) { s = s.Replace("t", other).ReplaceChar('x', 'y').ToUpper().ToLower(); },
        [](String& s) { s = s.SimplifyWhiteSpace().StripWhiteSpace(); },
        [](String& s) {
            std::vector<String> fields;
            s.Split(' ', fields);
            s = String::Join("--", fields);
        },
        [](String& s) { s = String(s.Unicode().get()); },
        [](String& s) { s = String::Number(s.ToDouble(), 99) + String::Number(s.Find("TEXT", 0, false).Value()); },
        [](String& s) { s = String(LONG_TEXT, 60) + String('x'); },
        [](String& s) { s = L"A text of thirty-two bits a unit, long enough"; },
        [](String&) { String(); },
        [](String&) { shared_array<int> array(new int[3]); },
        [](String&) { shared_ptr<int> pointer(new int(3)); },
    };
    const String original(LONG_TEXT);
    for (std::size_t i = 0; i < changes.size(); ++i) {
        SCOPED_TRACE(i);
        const long before = blocksInUse();
        for (const bool isShared : {false, true}) {
            String text = isShared ? original : String(LONG_TEXT);
            String copy(text);
            if (!isShared) {
                copy = "";
            }
            const String unchanged(text);
            exhaustMemory([&] { changes[i](text); }, [&] { ASSERT_TRUE(text.SharesTextWith(unchanged)); });
            EXPECT_EQ(original, LONG_TEXT);
        }
        EXPECT_EQ(blocksInUse(), before) << "a leak";
        EXPECT_EQ(original.UseCount(), 1U);
    }
}

}  // namespace
