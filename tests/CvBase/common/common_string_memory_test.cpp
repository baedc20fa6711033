// What memory exhaustion leaves behind: the text as it was, and no leak. Each allocation of each operation fails once.

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "CvBase/common/common_string.h"
#include "tests/support/FailingAllocations.h"

namespace {

constexpr char const* LONG_TEXT =
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
    };
    const String original(LONG_TEXT);
    for (std::size_t i = 0; i < changes.size(); ++i) {
        SCOPED_TRACE(i);
        const long before = test::blocksInUse();
        for (const bool isShared : {false, true}) {
            String text = isShared ? original : String(LONG_TEXT);
            String copy(text);
            if (!isShared) {
                copy = "";
            }
            const String unchanged(text);
            test::exhaustMemory([&] { changes[i](text); }, [&] { ASSERT_TRUE(text.SharesTextWith(unchanged)); });
            EXPECT_EQ(original, LONG_TEXT);
        }
        EXPECT_EQ(test::blocksInUse(), before) << "a leak";
        EXPECT_EQ(original.UseCount(), 1U);
    }
}

TEST(StringMemory, ConstructionFreesWhatItHasMade) {
    const wchar_t wide[] = L"A text of thirty-two bits a unit, long enough";
    const std::vector<std::function<void()>> constructions = {
        [] { String(); },
        [] { String text(LONG_TEXT); },
        [] { String text(LONG_TEXT, 40); },
        [] { String text('x'); },
        [&] { String text(wide); },
        [] { shared_array<int> array(new int[3]); },
        [] { shared_ptr<int> pointer(new int(3)); },
    };
    const long before = test::blocksInUse();
    for (const auto& construct : constructions) {
        test::exhaustMemory(construct, [&] { EXPECT_EQ(test::blocksInUse(), before); });
    }
    EXPECT_EQ(test::blocksInUse(), before);
}

}  // namespace
