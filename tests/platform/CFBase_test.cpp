#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "platform/CoreFoundation/Object.h"
#include "tests/support/CFSupport.h"

namespace {

using cv::CFReference;

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

TEST(CFBase, NumbersAreEqualWhenTheirValuesAreExactly) {
    const auto integer = [](SInt64 value) {
        return CFReference<CFTypeRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &value));
    };
    const auto real = [](double value) {
        return CFReference<CFTypeRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &value));
    };
    constexpr SInt64 TWO_TO_53 = SInt64{1} << 53;
    const struct {
        CFReference<CFTypeRef> a, b;
        bool areEqual;
    } cases[] = {
        {integer(5), real(5), true},
        {integer(-1), real(-1), true},
        {integer(0), real(-0.0), true},
        {integer(TWO_TO_53 + 1), real(9007199254740992.0), false},
        {integer(INT64_MAX), real(9223372036854775808.0), false},
        {integer(INT64_MIN), real(-9223372036854775808.0), true},
        {integer(-1), real(18446744073709551615.0), false},
        {real(0.5), real(0.5), true},
        {real(NAN), real(NAN), true},
        {real(INFINITY), real(-INFINITY), false},
        {integer(1), CFReference<CFTypeRef>(kCFBooleanTrue), false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(CFEqual(c.a.get(), c.b.get()), c.areEqual) << &c - cases;
        EXPECT_EQ(CFEqual(c.b.get(), c.a.get()), c.areEqual) << &c - cases;
        EXPECT_TRUE(!c.areEqual || CFHash(c.a.get()) == CFHash(c.b.get())) << &c - cases;
    }
}

/// Calls `work` with the thread's number on as many threads at once.
template <typename Work>
void onThreads(int count, Work work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back(work, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(CFBase, ConstantsOutliveEveryReleaseAndAreNotWrittenTo) {
    const CFTypeRef constants[] = {CFSTR("constant"), kCFPreferencesAnyUser, kCFBooleanFalse, kCFAllocatorNull,
                                   IUnknownUUID};
    for (const CFTypeRef constant : constants) {
        const std::string before(static_cast<const char*>(constant), sizeof(objc_object));
        onThreads(8, [constant](int) {
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
    onThreads(8, [probe](int) { CFRetain(probe); });
    EXPECT_EQ(CFGetRetainCount(probe), std::numeric_limits<CFIndex>::max());
    onThreads(8, [probe](int) {
        for (int i = 0; i < 1000; ++i) {
            CFRelease(probe);
        }
    });
    EXPECT_EQ(CFGetRetainCount(probe), std::numeric_limits<CFIndex>::max());
    ::operator delete(probe);
}

}  // namespace
