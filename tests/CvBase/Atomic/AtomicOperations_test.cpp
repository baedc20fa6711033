#include "CvBase/Atomic/AtomicOperations.h"

#include "tests/support/Test.h"

namespace {

using namespace test;

TEST(AtomicOperations, GiveTheNewValueAndExchangeOnlyTheComparand) {
    volatile unsigned int word = 1;
    EXPECT_EQ(Atomic::AtomicIncrement(word), 2U);
    EXPECT_EQ(Atomic::AtomicDecrement(word), 1U);
    EXPECT_EQ(Atomic::AtomicDecrement(word), 0U);
    EXPECT_EQ(Atomic::AtomicDecrement(word), 0xFFFFFFFFU);
    EXPECT_EQ(Atomic::AtomicIncrement(word), 0U);

    Atomic::AtomicWrite(word, 0x7FFFFFFF);
    EXPECT_EQ(Atomic::AtomicIncrement(word), 0x80000000U);
    EXPECT_EQ(Atomic::AtomicRead(word), 0x80000000U);

    int target = 0;
    void* volatile pointer = nullptr;
    Atomic::AtomicWrite(pointer, &target);
    EXPECT_EQ(Atomic::AtomicRead(pointer), &target);

    EXPECT_FALSE(Atomic::AtomicCompareExchange(word, 5, 3));
    EXPECT_EQ(word, 0x80000000U);
    EXPECT_TRUE(Atomic::AtomicCompareExchange(word, 5, 0x80000000));
    EXPECT_EQ(word, 5U);
}

TEST(AtomicOperations, LoseNoStepBetweenThreads) {
    constexpr unsigned int STEPS = 50000;
    volatile unsigned int steps = 0, exchanged = 0;
    onThreads(2, [&](int) {
        for (unsigned int step = 0; step < STEPS; ++step) {
            Atomic::AtomicIncrement(steps);
            Atomic::AtomicIncrement(steps);
            Atomic::AtomicDecrement(steps);
            for (unsigned int seen = 0; !Atomic::AtomicCompareExchange(exchanged, seen + 1, seen);) {
                seen = Atomic::AtomicRead(exchanged);
            }
        }
    });
    EXPECT_EQ(steps, 2 * STEPS);
    EXPECT_EQ(exchanged, 2 * STEPS);
}

}  // namespace
