#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include "tests/support/CFSupport.h"

namespace {

TEST(CFBaseDeathTest, NullIsRefusedWithTheFunctionsName) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(CFRetain(nullptr), "CFRetain.*NULL");
    EXPECT_DEATH(CFRelease(nullptr), "CFRelease.*NULL");
}

// On a Mac a null operand traps.
TEST(CFBase, NullEqualsNothing) {
    EXPECT_FALSE(CFEqual(nullptr, nullptr));
    EXPECT_FALSE(CFEqual(CFSTR("a"), nullptr));
    EXPECT_FALSE(CFEqual(nullptr, CFSTR("a")));
}

TEST(CFBase, StringsAreEqualWhenTheirUnitsAre) {
    const auto precomposed = test::makeString(u"\u4E00\u00E9");
    const auto decomposed = test::makeString(u"\u4E00e\u0301");
    const auto again = test::makeString(u"\u4E00\u00E9");
    EXPECT_TRUE(CFEqual(precomposed.get(), again.get()));
    EXPECT_FALSE(CFEqual(precomposed.get(), decomposed.get()));
    EXPECT_FALSE(CFEqual(test::makeString(u"\uFEFFa").get(), CFSTR("a")));
    EXPECT_FALSE(CFEqual(test::makeString({u"a\0b", 3}).get(), test::makeString({u"a\0c", 3}).get()));
    EXPECT_TRUE(CFEqual(test::makeString(u"Lang").get(), CFSTR("Lang")));
}

TEST(CFBase, TheKindOfAnObjectIsThatOfItsType) {
    EXPECT_EQ(CFGetTypeID(CFSTR("constant")), CFStringGetTypeID());
    EXPECT_EQ(CFGetTypeID(test::makeString(u"made").get()), CFStringGetTypeID());
    EXPECT_EQ(CFGetTypeID(test::makeString(u"").get()), CFStringGetTypeID());
}

}  // namespace
