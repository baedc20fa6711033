#include "CvBase/IPP/IPP_util_mac.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

namespace {

float const INF = std::numeric_limits<float>::infinity();
float const NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

struct FloatCase {
    float value;
    int scale;
    bool round;
    int result;
};

template <typename To>
void expectStored(FloatCase const& testCase) {
    To stored = 77;
    IPP::Convert(1, &testCase.value, &stored, testCase.scale, testCase.round);
    EXPECT_EQ(stored, testCase.result) << testCase.value << " at scale " << testCase.scale
                                       << (testCase.round ? ", rounded" : ", truncated");
}

TEST(ConvertFloatToShort, ScalesTruncatesOrRoundsAndSaturates) {
    FloatCase const cases[] = {
        {0.99999F, -15, false, 32767},
        {1.0F, -15, false, 32767},
        {-1.0F, -15, false, -32768},
        {-1.5F, -15, false, -32768},
        {-0.00001F, -15, false, 0},
        {0.5F / 32768, -15, true, 1},
        {-0.5F / 32768, -15, true, -1},
        {0.49999997F, 0, true, 1},  // the sum is rounded to single precision before it is truncated
        {65535.0F, -15, false, 32767},
        {65536.0F, -15, false, -32768},  // 2^31 is outside the range of 32 bits
        {INF, -15, true, -32768},
        {NOT_A_NUMBER, -15, false, -32768},
        {NOT_A_NUMBER, 0, true, -32768},
        {3.0F, -1, false, 6},
        {3.0F, -32, false, 3},
        {0.25F / 1073741824, 1, true, 0},  // the multiplier is -2^31: -0.5, and the input's sign adds 0.5
        {0.5F / 1073741824, 1, true, 0},   // -1 + 0.5
        {-0.5F / 1073741824, 1, true, 0},  // 1 - 0.5
        {0.5F / 1073741824, 1, false, -1},
        {1.0F, INT_MIN, false, 1},
        {1.0F, INT_MAX, false, 2},
    };
    for (FloatCase const& testCase : cases) {
        expectStored<short>(testCase);
    }
}

TEST(ConvertFloatToInt, HoldsToFullScaleUnlessTheScaleIsZero) {
    FloatCase const cases[] = {
        {3.7F, 0, false, 3},
        {3.7F, 0, true, 4},
        {-3.5F, 0, true, -4},
        {8388609.0F, 0, true, 8388610},  // 8388609.5 is no float
        {2147483648.0F, 0, false, INT_MIN},
        {-2147483648.0F, 0, false, INT_MIN},
        {INF, 0, false, INT_MIN},
        {NOT_A_NUMBER, 0, true, INT_MIN},
        {0.25F, -31, true, 536870912},
        {1.0F, -31, true, INT_MIN},
        {5.0F, -31, true, INT_MIN},
        {-5.0F, -31, false, INT_MIN},
        {5.0F, -15, false, 32768},
        {-5.0F, -15, true, -32768},
        {INF, -15, false, 32768},
        {NOT_A_NUMBER, -15, false, INT_MIN},
        {5.0F, 1, false, 0},
        {5.0F, 1, true, 1},
        {-5.0F, 1, true, -1},
        {0.0F, INT_MIN, false, INT_MIN},  // 0 times infinity
        {1.0F, INT_MAX, true, 0},
        {1e-30F, -127, true, 170141184},
    };
    for (FloatCase const& testCase : cases) {
        expectStored<int>(testCase);
    }
}

TEST(ConvertToFloatingPoint, Scales) {
    short const shorts[] = {-32768, 16384};
    float floats[2];
    double doubles[2];
    IPP::Convert(2, shorts, floats, 15);
    EXPECT_EQ(floats[0], -1.0F);
    EXPECT_EQ(floats[1], 0.5F);
    IPP::Convert(2, shorts, doubles, -1);
    EXPECT_EQ(doubles[0], std::ldexp(1.0, -16));
    EXPECT_EQ(doubles[1], std::ldexp(-1.0, -17));

    int const ints[] = {INT_MIN, 16777217};
    IPP::Convert(2, ints, floats, 31);
    EXPECT_EQ(floats[0], -1.0F);
    EXPECT_EQ(floats[1], std::ldexp(1.0F, -7));  // rounded to even on the way to float
    IPP::Convert(2, ints, doubles, -1000);
    EXPECT_EQ(doubles[0], std::ldexp(-1.0, 1031));
    IPP::Convert(2, ints, doubles, 0);
    EXPECT_EQ(doubles[1], 16777217.0);
    IPP::Convert(2, ints, floats, INT_MAX);
    EXPECT_EQ(floats[1], 0.0F);
    IPP::Convert(2, ints, floats, INT_MIN);
    EXPECT_EQ(floats[0], -INF);
}

TEST(ConvertFloatToBytesAndDoubleToInt, LeavesTheDestinationAsItWas) {
    float const floats[] = {1.0F, 2.0F};
    double const doubles[] = {1.0, 2.0};
    unsigned char bytes[] = {17, 18};
    int ints[] = {19, 20};
    IPP::Convert(2, floats, bytes, 0, true);
    IPP::Convert(2, doubles, ints, 0, false);
    EXPECT_THAT(bytes, testing::ElementsAre(17, 18));
    EXPECT_THAT(ints, testing::ElementsAre(19, 20));
}

template <typename T>
T* const NOWHERE = nullptr;

TEST(EveryRoutine, ReadsNoPointerForNoElements) {
    IPP::Convert(0, NOWHERE<unsigned char>, NOWHERE<float>);
    IPP::Convert(0, NOWHERE<short>, NOWHERE<float>, 15);
    IPP::Convert(0, NOWHERE<short>, NOWHERE<double>, 15);
    IPP::Convert(0, NOWHERE<int>, NOWHERE<float>, 31);
    IPP::Convert(0, NOWHERE<int>, NOWHERE<double>, 31);
    IPP::Convert(0, NOWHERE<float>, NOWHERE<short>, -15, true);
    IPP::Convert(0, NOWHERE<float>, NOWHERE<int>, -31, false);
    IPP::Convert(0, NOWHERE<float>, NOWHERE<double>);
    IPP::Convert(0, NOWHERE<double>, NOWHERE<float>);
    IPP::Copy(0, NOWHERE<char>, NOWHERE<char>);
    IPP::Copy(0, NOWHERE<double>, NOWHERE<double>);
    IPP::Move(0, NOWHERE<float>, NOWHERE<float>);
    IPP::Set(0, NOWHERE<unsigned char>, static_cast<unsigned char>(1));
    IPP::Set(0, NOWHERE<double>, 1.0);
    IPP::Zero(0, NOWHERE<short>);
    EXPECT_TRUE(IPP::Equal(0, nullptr, nullptr));
}

template <typename T>
class Arrays : public testing::Test {};

template <typename T>
class OverlappingArrays : public testing::Test {};

using ElementTypes = testing::Types<unsigned char, short, int, unsigned int, float, double>;
using MovedTypes = testing::Types<unsigned char, short, unsigned int, float, double>;
TYPED_TEST_SUITE(Arrays, ElementTypes);
TYPED_TEST_SUITE(OverlappingArrays, MovedTypes);

TYPED_TEST(Arrays, AreCopiedZeroedAndFilledElementByElement) {
    TypeParam const source[] = {1, 2, 3, 4};
    TypeParam values[] = {9, 9, 9, 9};
    IPP::Copy(3, source, values);
    EXPECT_THAT(values, testing::ElementsAre(1, 2, 3, 9));
    IPP::Zero(2, values + 1);
    EXPECT_THAT(values, testing::ElementsAre(1, 0, 0, 9));
    IPP::Set(2, values, TypeParam{5});
    EXPECT_THAT(values, testing::ElementsAre(5, 5, 0, 9));
}

TYPED_TEST(OverlappingArrays, AreMovedEitherWay) {
    TypeParam values[] = {1, 2, 3, 4, 5};
    IPP::Move(4, values, values + 1);
    EXPECT_THAT(values, testing::ElementsAre(1, 1, 2, 3, 4));
    IPP::Move(3, values + 2, values);
    EXPECT_THAT(values, testing::ElementsAre(2, 3, 4, 3, 4));
}

TEST(Set, StoresMinusZeroAsZeroBytes) {
    double value = 1.0;
    IPP::Set(1, &value, -0.0);
    EXPECT_FALSE(std::signbit(value));
}

TEST(Copy, CountsInBytesOfItsElements) {
    char const text[] = "abc";
    char copied[sizeof text];
    IPP::Copy(sizeof text, text, copied);
    EXPECT_STREQ(copied, "abc");
}

}  // namespace
