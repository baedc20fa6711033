#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include "platform/MessageSend.h"
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
    EXPECT_TRUE(CFEqual(test::makeString(u"Lang\u00E9").get(), CFSTR("Lang\xC3\xA9")));
    EXPECT_FALSE(CFEqual(test::makeString(u"\u4E00\u00E9").get(), test::makeString(u"\u4E00e\u0301").get()));
    EXPECT_FALSE(CFEqual(test::makeString(u"\uFEFFa").get(), CFSTR("a")));
    EXPECT_FALSE(CFEqual(test::makeString({u"a\0b", 3}).get(), test::makeString({u"a\0c", 3}).get()));
}

// Dictionaries come from Foundation, with keys of its own class of strings or of the port's.
TEST(CFDictionary, FindsAKeyWhateverItsClass) {
    const id pool = cv::send<id>(cv::classNamed("NSAutoreleasePool"), "new");
    const id value = cv::send<id>(cv::classNamed("NSObject"), "new");
    for (const char* key : {"", "CFBundleDisplayName", "caf\xC3\xA9", "\xE4\xB8\xAD\xE6\x96\x87", "\xF0\x9F\x98\x80"}) {
        const auto ownKey = test::string(key);
        const id keys[] = {cv::send<id>(cv::classNamed("NSString"), "stringWithUTF8String:", key),
                           reinterpret_cast<id>(const_cast<void*>(static_cast<CFTypeRef>(ownKey.get())))};
        for (const id storedKey : keys) {
            const auto dictionary = reinterpret_cast<CFDictionaryRef>(
                cv::send<id>(cv::classNamed("NSDictionary"), "dictionaryWithObject:forKey:", value, storedKey));
            EXPECT_EQ(CFDictionaryGetValue(dictionary, keys[0]), value) << key;
            EXPECT_EQ(CFDictionaryGetValue(dictionary, keys[1]), value) << key;
            EXPECT_EQ(CFDictionaryGetValue(dictionary, CFSTR("another")), nullptr);
        }
    }
    cv::send<void>(value, "release");
    cv::send<void>(pool, "release");
}

}  // namespace
