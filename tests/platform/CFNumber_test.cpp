#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <utility>

#include "tests/support/CFSupport.h"

namespace {

using test::Owned;

template <typename T>
using Limits = std::numeric_limits<T>;

Owned<CFNumberRef> number(SInt64 value) {
    return Owned<CFNumberRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &value));
}

Owned<CFNumberRef> number(double value) {
    return Owned<CFNumberRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &value));
}

TEST(CFNumber, KeepsEveryBitOfADouble) {
    for (const double value : {0.1, -0.0, Limits<double>::infinity(), Limits<double>::max()}) {
        double stored = 99;
        EXPECT_TRUE(CFNumberGetValue(number(value).get(), kCFNumberFloat64Type, &stored));
        EXPECT_EQ(std::memcmp(&stored, &value, sizeof value), 0) << value;
    }
}

TEST(CFNumber, TakesAndGivesAValueAtAnyAddress) {
    alignas(8) char memory[] = "\0\x2A\0\0\0\0\0\0";
    const Owned<CFNumberRef> made(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, memory + 1));
    EXPECT_TRUE(CFNumberGetValue(made.get(), kCFNumberSInt32Type, memory + 3));
    EXPECT_EQ(memory[3], 42);
}

TEST(CFNumber, SaysWhenAnIntegerLosesSomething) {
    const struct {
        Owned<CFNumberRef> number;
        bool fits32;
        SInt32 as32;
        bool fits64;
        SInt64 as64;
    } cases[] = {
        {number(SInt64{0}), true, 0, true, 0},
        {number(SInt64{Limits<SInt32>::min()}), true, Limits<SInt32>::min(), true, Limits<SInt32>::min()},
        {number(SInt64{Limits<SInt32>::max()}), true, Limits<SInt32>::max(), true, Limits<SInt32>::max()},
        {number(Limits<SInt64>::min()), false, 0, true, Limits<SInt64>::min()},
        {number(Limits<SInt64>::max()), false, -1, true, Limits<SInt64>::max()},
        {number(SInt64{1} << 31), false, Limits<SInt32>::min(), true, SInt64{1} << 31},
        {number(SInt64{5'000'000'000}), false, 705'032'704, true, 5'000'000'000},
        {number(-7.0), true, -7, true, -7},
        {number(2.5), false, 2, false, 2},
        {number(-2.5), false, -2, false, -2},
        {number(Limits<double>::quiet_NaN()), false, 0, false, 0},
        {number(1e300), false, -1, false, Limits<SInt64>::max()},
        {number(-1e300), false, 0, false, Limits<SInt64>::min()},
        {number(9223372036854775808.0), false, -1, false, Limits<SInt64>::max()},
        {number(-9223372036854775808.0), false, 0, true, Limits<SInt64>::min()},
    };
    for (const auto& c : cases) {
        SInt32 as32 = 99, asInt = 99;
        SInt64 as64 = 99;
        EXPECT_EQ(CFNumberGetValue(c.number.get(), kCFNumberSInt32Type, &as32), c.fits32);
        EXPECT_EQ(CFNumberGetValue(c.number.get(), kCFNumberSInt64Type, &as64), c.fits64);
        EXPECT_EQ(CFNumberGetValue(c.number.get(), kCFNumberIntType, &asInt), c.fits32);
        EXPECT_EQ(as32, c.as32);
        EXPECT_EQ(asInt, c.as32);
        EXPECT_EQ(as64, c.as64);
    }
}

TEST(CFNumber, SaysWhenADoubleLosesSomething) {
    constexpr SInt64 LIMIT = SInt64{1} << 53;  // from here on doubles lie 2 apart
    for (const auto& [value, exact] :
         {std::pair{LIMIT, true}, {LIMIT + 1, false}, {Limits<SInt64>::max(), false}, {Limits<SInt64>::min(), true}}) {
        double stored = 0;
        EXPECT_EQ(CFNumberGetValue(number(value).get(), kCFNumberFloat64Type, &stored), exact) << value;
        EXPECT_EQ(stored, static_cast<double>(value));
    }
}

TEST(CFNumber, RefusesOtherTypesAndNull) {
    const SInt32 value = 1;
    SInt64 stored = 99;
    EXPECT_EQ(CFNumberCreate(kCFAllocatorDefault, 77, &value), nullptr);
    EXPECT_EQ(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, nullptr), nullptr);
    EXPECT_FALSE(CFNumberGetValue(number(SInt64{1}).get(), 77, &stored));
    EXPECT_EQ(stored, 99);
}

TEST(CFNumber, EqualityIsOfValuesNotOfTypes) {
    EXPECT_TRUE(CFEqual(number(SInt64{2}).get(), number(2.0).get()));
    EXPECT_FALSE(CFEqual(number(SInt64{2}).get(), number(SInt64{3}).get()));
    EXPECT_FALSE(CFEqual(number(SInt64{2}).get(), CFSTR("2")));
    EXPECT_EQ(CFGetTypeID(number(SInt64{2}).get()), CFNumberGetTypeID());
    EXPECT_EQ(CFGetTypeID(number(2.5).get()), CFNumberGetTypeID());
    EXPECT_NE(CFNumberGetTypeID(), CFStringGetTypeID());
}

}  // namespace
