#include "CvBase/Util/CFString.h"

#include "tests/support/CFSupport.h"
#include "tests/support/Text.h"

namespace {

using namespace test;
using Util::CFString;

static_assert(!std::is_copy_constructible_v<CFString> && !std::is_copy_assignable_v<CFString>);

TEST(UtilCFString, KeepsTextThatIsUTF8AndStandsAnEmptyStringForOther) {
    for (const char* text : {"", "caf\xC3\xA9", "\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF", "a\xEF\xBB\xBF"}) {
        EXPECT_EQ(CFString(text, CFString::ReleaseOnDestroy).ToString(), text);
        EXPECT_EQ(CFString(String(text), CFString::ReleaseOnDestroy).ToString(), text);
    }
    for (const char* text : {"a\xFF", "\xED\xA0\x80", "\xC0\x80", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(CFString(text, CFString::ReleaseOnDestroy).ToString(), "");
        EXPECT_EQ(CFString(String(text), CFString::ReleaseOnDestroy).ToString(), "");
    }
    const CFString cut(makeText(std::string_view("a\0b", 3)), CFString::ReleaseOnDestroy);
    EXPECT_EQ(units(cut.Get()), u"a") << "the text before the first NUL";
}

TEST(UtilCFString, GivesTextThatHasAUTF8FormAndAtMostAMillionUnits) {
    // clang-format off
    const struct { std::u16string units; std::string expected; } cases[] = {
        {{u"a\0b", 3}, "a"}, {u"a\xD800", ""}, {std::u16string(1'000'001, u'a'), ""},
        {std::u16string(999'999, u'a') + u'\u20AC', std::string(999'999, 'a') + "\xE2\x82\xAC"},
    };
    // clang-format on
    for (const auto& c : cases) {
        const auto string = makeString(c.units);
        EXPECT_TRUE(CFString(string.get(), CFString::DoNotRelease).ToString() == c.expected.c_str());
    }
}

TEST(UtilCFString, ReleasesOnlyWhatItWasToldTo) {
    const auto string = makeString(u"counted");
    const CFIndex before = CFGetRetainCount(string.get());
    for (const int behavior : {1, 2, -1, INT_MIN}) {
        { const CFString adopted(string.get(), static_cast<CFString::ReleaseBehavior>(behavior)); }
        EXPECT_EQ(CFGetRetainCount(string.get()), before) << behavior;
    }
    CFRetain(string.get());
    {
        const CFString adopted(string.get(), CFString::ReleaseOnDestroy);
        EXPECT_EQ(adopted.Get(), string.get());
        EXPECT_EQ(CFGetRetainCount(string.get()), before + 1);
    }
    EXPECT_EQ(CFGetRetainCount(string.get()), before);
}

TEST(UtilCFString, StandsAnEmptyStringForANullReference) {
    EXPECT_EQ(CFString(CFStringRef{}, CFString::ReleaseOnDestroy).ToString(), "");
    CFStringRef kept = nullptr;
    {
        const CFString string(CFStringRef{}, CFString::DoNotRelease);
        kept = string.Get();
    }
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(CFStringGetLength(kept), 0);
    CFRelease(kept);
}

}  // namespace
