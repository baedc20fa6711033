#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "platform/CoreFoundation/Object.h"
#include "tests/support/CFSupport.h"
#include "tests/support/Threads.h"

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

TEST(CFBase, ConstantsOutliveEveryReleaseAndAreNotWrittenTo) {
    const CFTypeRef constants[] = {CFSTR("constant"), kCFPreferencesAnyUser, kCFBooleanFalse, kCFAllocatorNull,
                                   IUnknownUUID};
    for (const CFTypeRef constant : constants) {
        const std::string before(static_cast<const char*>(constant), sizeof(objc_object));
        test::onThreads(8, [constant](int) {
            for (int i = 0; i < 1000; ++i) {
                CFRelease(constant);
            }
        });
        EXPECT_EQ(std::string(static_cast<const char*>(constant), sizeof(objc_object)), before);
    }
    EXPECT_TRUE(CFEqual(constants[0], test::string("constant").get()));
}

struct Probe;
extern const objc_class PROBE_CLASS;

/// An object with nearly as many references as can be counted.
struct Probe : objc_object {
    Probe() : objc_object(PROBE_CLASS, IMMORTAL - 2) {}
    ~Probe() { ADD_FAILURE() << "an immortal object was destroyed"; }
};

const objc_class PROBE_CLASS("Probe", PROBE_CLASS, nullptr, nullptr, cv::identityOf<Probe>());

TEST(CFBase, AnObjectWhoseCountWouldOverflowBecomesImmortal) {
    auto* const probe = new Probe;
    CFRetain(probe);
    CFRelease(probe);
    test::onThreads(8, [probe](int) { CFRetain(probe); });
    EXPECT_EQ(CFGetRetainCount(probe), std::numeric_limits<CFIndex>::max());
    test::onThreads(8, [probe](int) {
        for (int i = 0; i < 1000; ++i) {
            CFRelease(probe);
        }
    });
    EXPECT_EQ(CFGetRetainCount(probe), std::numeric_limits<CFIndex>::max());
    ::operator delete(probe);
}

}  // namespace
