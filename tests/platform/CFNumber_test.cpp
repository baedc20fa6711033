#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <limits>

#include "tests/support/CFSupport.h"

namespace {

using cv::CFReference;

template <typename T>
using Limits = std::numeric_limits<T>;

CFReference<CFNumberRef> number(SInt64 value) {
    return CFReference<CFNumberRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &value));
}

CFReference<CFNumberRef> number(double value) {
    return CFReference<CFNumberRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &value));
}

TEST(CFNumber, TakesAndGivesAValueAtAnyAddress) {
    alignas(8) char memory[] = "\0\x2A\0\0\0\0\0\0";
    const CFReference<CFNumberRef> made(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, memory + 1));
    EXPECT_TRUE(CFNumberGetValue(made.get(), kCFNumberSInt32Type, memory + 3));
    EXPECT_EQ(memory[3], 42);
}

TEST(CFNumber, SaysWhenAnIntegerLosesSomething) {
    const struct {
        CFReference<CFNumberRef> number;
        bool fits32;
        SInt32 as32;
        bool fits64;
        SInt64 as64;
    } cases[] = {
        {number(SInt64{Limits<SInt32>::min()}), true, Limits<SInt32>::min(), true, Limits<SInt32>::min()},
        {number(SInt64{1} << 31), false, Limits<SInt32>::min(), true, SInt64{1} << 31},
        {number(Limits<SInt64>::max()), false, -1, true, Limits<SInt64>::max()},
        {number(-2.5), false, -2, false, -2},
        {number(Limits<double>::quiet_NaN()), false, 0, false, 0},
        {number(1e300), false, -1, false, Limits<SInt64>::max()},
        {number(9223372036854775808.0), false, -1, false, Limits<SInt64>::max()},
        {number(-9223372036854775808.0), false, 0, true, Limits<SInt64>::min()},
    };
    for (const auto& c : cases) {
        SInt32 as32 = 99;
        SInt64 as64 = 99;
        EXPECT_EQ(CFNumberGetValue(c.number.get(), kCFNumberSInt32Type, &as32), c.fits32);
        EXPECT_EQ(CFNumberGetValue(c.number.get(), kCFNumberSInt64Type, &as64), c.fits64);
        EXPECT_EQ(as32, c.as32);
        EXPECT_EQ(as64, c.as64);
    }
}

TEST(CFNumber, SaysWhenADoubleLosesSomething) {
    double stored = 0;
    EXPECT_TRUE(CFNumberGetValue(number(SInt64{1} << 53).get(), kCFNumberFloat64Type, &stored));
    EXPECT_FALSE(CFNumberGetValue(number(Limits<SInt64>::max()).get(), kCFNumberFloat64Type, &stored));
    EXPECT_EQ(stored, 9223372036854775808.0);
}

TEST(CFNumber, RefusesOtherTypesAndNull) {
    const SInt32 value = 1;
    EXPECT_EQ(CFNumberCreate(kCFAllocatorDefault, 77, &value), nullptr);
    EXPECT_EQ(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, nullptr), nullptr);
}

}  // namespace
