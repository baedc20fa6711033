#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/CFSupport.h"

namespace {

using cv::CFReference;

constexpr CFUUIDBytes BYTES = {0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x11, 0xEF,
                               0x80, 0x00, 0xAB, 0xCD, 0xEF, 0x01, 0x23, 0x45};
constexpr char TEXT[] = "5CD9484B-4A86-11EF-8000-ABCDEF012345";

CFUUIDRef constantUUID(UInt8 last) {
    return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x11, 0xEF, 0x80,
                                          0x00, 0xAB, 0xCD, 0xEF, 0x01, 0x23, last);
}

CFReference<CFUUIDRef> fromText(const char* text) {
    return CFReference<CFUUIDRef>(CFUUIDCreateFromString(kCFAllocatorDefault, test::string(text).get()));
}

TEST(CFUUID, BytesAndTextAreTheSameIdentifier) {
    const CFReference<CFUUIDRef> fromBytes(CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, BYTES));
    const CFReference<CFStringRef> text(CFUUIDCreateString(kCFAllocatorDefault, fromBytes.get()));
    EXPECT_EQ(test::text(text.get()), TEXT);
    for (const char* spelling : {TEXT, "5cd9484b-4a86-11ef-8000-abcdef012345"}) {
        const auto uuid = fromText(spelling);
        ASSERT_TRUE(uuid) << spelling;
        EXPECT_TRUE(CFEqual(uuid.get(), fromBytes.get()));
        const CFUUIDBytes bytes = CFUUIDGetUUIDBytes(uuid.get());
        EXPECT_EQ(std::memcmp(&bytes, &BYTES, sizeof bytes), 0);
    }
}

TEST(CFUUID, RefusesEveryOtherText) {
    for (const char* text :
         {"", "5CD9484B", "5CD9484B-4A86-11EF-8000-ABCDEF01234", "5CD9484B4-A86-11EF-8000-ABCDEF012345",
          "5CD9484B-4A86-11EF-8000-ABCDEF0123456", "5CD9484B-4A86-11EF-8000-0xCDEF012345",
          "5CD9484B+4A86-11EF-8000-ABCDEF012345", "{5CD9484B-4A86-11EF-8000-ABCDEF01234}"}) {
        EXPECT_FALSE(fromText(text)) << text;
    }
    const auto withEnd = test::makeString({u"5CD9484B-4A86-11EF-8000-ABCDEF012345\0", 37});
    EXPECT_EQ(CFUUIDCreateFromString(kCFAllocatorDefault, withEnd.get()), nullptr);
    EXPECT_EQ(CFUUIDCreateFromString(kCFAllocatorDefault, nullptr), nullptr);
}

TEST(CFUUID, ConstantsAreOneObjectAndOutliveEveryRelease) {
    const CFUUIDRef constant = constantUUID(0x45);
    EXPECT_EQ(constantUUID(0x45), constant);
    CFRelease(constant);
    CFRelease(constant);
    EXPECT_TRUE(CFEqual(constant, fromText(TEXT).get()));
    EXPECT_TRUE(CFEqual(fromText(TEXT).get(), constant));
    EXPECT_FALSE(CFEqual(constantUUID(0x46), fromText(TEXT).get()));
}

}  // namespace
