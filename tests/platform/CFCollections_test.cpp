#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include "platform/MessageSend.h"
#include "tests/support/CFSupport.h"

// Arrays and dictionaries come from Foundation here, as they do for this project's code.

namespace {

class CFCollections : public testing::Test {
protected:
    ~CFCollections() override { cv::send<void>(pool_, "release"); }

    const id pool_ = cv::send<id>(cv::classNamed("NSAutoreleasePool"), "new");
};

id asObject(CFTypeRef ref) {
    return reinterpret_cast<id>(const_cast<void*>(ref));
}

TEST_F(CFCollections, AnArrayIsNotReadBeyondItsEnds) {
    const auto array =
        reinterpret_cast<CFArrayRef>(cv::send<id>(cv::classNamed("NSArray"), "arrayWithObject:", asObject(CFSTR("a"))));
    EXPECT_EQ(CFArrayGetValueAtIndex(array, 0), CFSTR("a"));
    EXPECT_EQ(CFGetTypeID(array), CFArrayGetTypeID());
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(CFArrayGetValueAtIndex(array, 1), "beyond the array");
    EXPECT_DEATH(CFArrayGetValueAtIndex(array, -1), "beyond the array");
}

TEST_F(CFCollections, ADictionaryFindsAKeyWhateverItsClass) {
    for (const char* key : {"", "CFBundleDisplayName", "caf\xC3\xA9", "\xE4\xB8\xAD\xE6\x96\x87", "\xF0\x9F\x98\x80"}) {
        const id foundationKey = cv::send<id>(cv::classNamed("NSString"), "stringWithUTF8String:", key);
        const auto ownKey = test::string(key);
        const id value = asObject(CFSTR("value"));
        for (const id storedKey : {foundationKey, asObject(ownKey.get())}) {
            const auto dictionary = reinterpret_cast<CFDictionaryRef>(
                cv::send<id>(cv::classNamed("NSDictionary"), "dictionaryWithObject:forKey:", value, storedKey));
            EXPECT_EQ(CFDictionaryGetValue(dictionary, foundationKey), CFSTR("value")) << key;
            EXPECT_EQ(CFDictionaryGetValue(dictionary, ownKey.get()), CFSTR("value")) << key;
            EXPECT_EQ(CFDictionaryGetValue(dictionary, CFSTR("another")), nullptr);
            EXPECT_EQ(CFGetTypeID(dictionary), CFDictionaryGetTypeID());
        }
    }
}

}  // namespace
