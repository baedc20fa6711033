#include "CvBase/IPP/IPP_util_mac.h"

#include "tests/support/Test.h"

namespace {

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
