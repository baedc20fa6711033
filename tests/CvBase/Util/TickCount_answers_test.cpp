// The clocks' arithmetic, on answers of the system that are made up here: these definitions stand before its own.

#include <CoreFoundation/CoreFoundation.h>
#include <mach/mach_time.h>
#include <sys/sysctl.h>

#include <ctime>

#include "CvBase/Util/TickCount.h"
#include "tests/support/Test.h"

namespace {

struct Answers {
    double absoluteTime = 0;
    uint64_t machTime = 0;
    mach_timebase_info_data_t timebase{1, 1};
    int controlFound = 0;
    int controlRead = 0;
    uint64_t rate = 0;
};
Answers g_answers;

}  // namespace

CFAbsoluteTime CFAbsoluteTimeGetCurrent() {
    return g_answers.absoluteTime;
}

uint64_t mach_absolute_time() {
    return g_answers.machTime;
}

kern_return_t mach_timebase_info(mach_timebase_info_t info) {
    *info = g_answers.timebase;
    return KERN_SUCCESS;
}

int sysctlnametomib(const char* name, int* mib, size_t* count) {
    *mib = 15;
    *count = 1;
    return std::strcmp(name, "hw.cpufrequency") == 0 ? g_answers.controlFound : -1;
}

int sysctl(const int* mib, unsigned int count, void* oldValue, size_t* oldLength, const void* newValue, size_t) {
    EXPECT_TRUE(count == 1 && *mib == 15 && *oldLength == 8 && newValue == nullptr);
    std::memcpy(oldValue, &g_answers.rate, sizeof g_answers.rate);
    return g_answers.controlRead;
}

namespace {

TEST(TickCountAnswers, MillisAreRoundedHalfAwayFromZeroAndWrap) {
    // clang-format off
    const struct { double seconds; unsigned int millis; } cases[] = {
        {0.0, 0}, {0.0004, 0}, {0.0005, 1}, {1.0014, 1001}, {-0.0004, 0}, {-0.0005, 0xFFFFFFFF}, {-1.5, 0xFFFFFFFF - 1499},
        {2147483.648, 0x80000000}, {4294967.295, 0xFFFFFFFF}, {4294967.296, 0}, {-4294967.297, 0xFFFFFFFF}, {817000000.25, 0x38FEAAFA},
        // From 2^63 milliseconds on, where doubles lie 2048 apart.
        {9223372036854775.808, 0}, {9223372036954775.808, 0x05F5E000},
    };
    // clang-format on
    for (const auto& one : cases) {
        g_answers.absoluteTime = one.seconds;
        EXPECT_EQ(Util::GetTickCountMillis(), one.millis) << one.seconds;
    }
}

TEST(TickCountAnswers, SecondsAreThoseSince1970) {
    const auto before = static_cast<int>(std::time(nullptr));
    EXPECT_GE(Util::GetTimeSeconds(), before);
    EXPECT_LE(Util::GetTimeSeconds(), static_cast<int>(std::time(nullptr)));
}

TEST(TickCountAnswers, CycleSecondsScaleTheCountByItsTimebase) {
    g_answers.machTime = 3'000'000'000'000'000'000;
    EXPECT_DOUBLE_EQ(Util::GetCycleCountSeconds(), 3e9);
    g_answers.timebase = {125, 3};
    EXPECT_DOUBLE_EQ(Util::GetCycleCountSeconds(), 125e9);
    g_answers.machTime = UINT64_MAX;
    EXPECT_DOUBLE_EQ(Util::GetCycleCountSeconds(), 0x1p64 * 125 / 3 * 1e-9);
}

TEST(TickCountAnswers, ProcessorRateIsThatOfTheSystemModulo32Bits) {
    g_answers.rate = 2'800'000'000;
    EXPECT_EQ(Util::GetCPUCyclesPerSecond(), 2.8e9);
    g_answers.rate = 5'000'000'000;
    EXPECT_EQ(Util::GetCPUCyclesPerSecond(), 5e9 - 0x1p32);
    g_answers.controlRead = -1;
    EXPECT_EQ(Util::GetCPUCyclesPerSecond(), 0.0);
    g_answers.controlRead = 0;
    g_answers.controlFound = -1;
    EXPECT_EQ(Util::GetCPUCyclesPerSecond(), 0.0);
}

}  // namespace
