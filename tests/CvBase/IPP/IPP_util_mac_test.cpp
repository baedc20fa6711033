#include "CvBase/IPP/IPP_util_mac.h"

#include "tests/support/Test.h"

namespace {

const float INF = std::numeric_limits<float>::infinity();
const float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

struct FloatCase {
    float value;
    int scale;
    bool round;
    int result;
};

template <typename To>
void expectStored(std::initializer_list<FloatCase> cases) {
    for (const FloatCase& row : cases) {
        To stored = 77;
        IPP::Convert(1, &row.value, &stored, row.scale, row.round);
        EXPECT_EQ(stored, row.result) << row.value << " at scale " << row.scale << (row.round ? ", rounded" : "");
    }
}

// The vector paths are compared with plain loops elsewhere, value by value. These rows hold both to the rules.

// clang-format off

TEST(ConvertFloatToShort, ScalesTruncatesOrRoundsAndSaturates) {
    expectStored<short>({
        {0.99999F, -15, false, 32767}, {1.0F, -15, false, 32767}, {-1.5F, -15, false, -32768}, {-0.00001F, -15, false, 0},
        {0.5F / 32768, -15, true, 1}, {-0.5F / 32768, -15, true, -1},
        {0.49999997F, 0, true, 1},  // the sum is rounded to single precision before it is truncated
        {65535.0F, -15, false, 32767}, {65536.0F, -15, false, -32768},  // 2^31 is outside the range of 32 bits
        {INF, -15, true, -32768}, {NOT_A_NUMBER, 0, true, -32768}, {3.0F, -1, false, 6}, {3.0F, -32, false, 3},
        {0.25F / 1073741824, 1, true, 0},  // the multiplier is -2^31: -0.5, and the input's sign adds 0.5
        {0.5F / 1073741824, 1, true, 0}, {-0.5F / 1073741824, 1, true, 0}, {0.5F / 1073741824, 1, false, -1},
        {1.0F, INT_MIN, false, 1}, {1.0F, INT_MAX, false, 2},
    });
}

TEST(ConvertFloatToInt, HoldsToFullScaleUnlessTheScaleIsZero) {
    expectStored<int>({
        {3.7F, 0, false, 3}, {3.7F, 0, true, 4}, {-3.5F, 0, true, -4}, {8388609.0F, 0, true, 8388610},  // 8388609.5 is no float
        {2147483648.0F, 0, false, INT_MIN}, {-2147483648.0F, 0, false, INT_MIN}, {NOT_A_NUMBER, 0, true, INT_MIN},
        {0.25F, -31, true, 536870912}, {5.0F, -31, true, INT_MIN}, {-5.0F, -31, false, INT_MIN}, {5.0F, -15, false, 32768},
        {-5.0F, -15, true, -32768}, {INF, -15, false, 32768}, {NOT_A_NUMBER, -15, false, INT_MIN}, {5.0F, 1, false, 0},
        {5.0F, 1, true, 1}, {-5.0F, 1, true, -1}, {0.0F, INT_MIN, false, INT_MIN},  // 0 times infinity
        {1.0F, INT_MAX, true, 0}, {1e-30F, -127, true, 170141184},
    });
}

// clang-format on

TEST(ConvertNothing, FromFloatToBytesAndFromDoubleToInts) {
    const float single = 1;
    const double twofold = 1;
    unsigned char byte = 7;
    int number = 7;
    IPP::Convert(1, &single, &byte, 0, true);
    IPP::Convert(1, &twofold, &number, 0, false);
    EXPECT_EQ(byte, 7);
    EXPECT_EQ(number, 7);
}

template <typename T>
void expectCopiedAndZeroed() {
    const T source[] = {1, 2, 3, 4};
    T values[] = {9, 9, 9, 9};
    IPP::Copy(3, source, values);
    EXPECT_THAT(values, testing::ElementsAre(1, 2, 3, 9));
    IPP::Zero(2, values + 1);
    EXPECT_THAT(values, testing::ElementsAre(1, 0, 0, 9));
}

template <typename T>
void expectMovedCopiedAndZeroed() {
    T values[] = {1, 2, 3, 4, 5};
    IPP::Move(4, values, values + 1);
    EXPECT_THAT(values, testing::ElementsAre(1, 1, 2, 3, 4));
    IPP::Move(3, values + 2, values);
    EXPECT_THAT(values, testing::ElementsAre(2, 3, 4, 3, 4));
    expectCopiedAndZeroed<T>();
}

TEST(Arrays, AreCopiedMovedAndZeroedElementByElement) {
    expectMovedCopiedAndZeroed<unsigned char>();
    expectMovedCopiedAndZeroed<short>();
    expectCopiedAndZeroed<int>();
    expectMovedCopiedAndZeroed<unsigned int>();
    expectMovedCopiedAndZeroed<float>();
    expectMovedCopiedAndZeroed<double>();
    char copied[4];
    IPP::Copy(4, "abc", copied);
    EXPECT_STREQ(copied, "abc");
}

}  // namespace
