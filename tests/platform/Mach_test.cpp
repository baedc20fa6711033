#include <gmock/gmock.h>
#include <libkern/OSAtomic.h>
#include <mach/mach_time.h>
#include <sys/sysctl.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <thread>

#include "platform/Mach/ProcessorRate.h"
#include "tests/support/TempDir.h"

namespace {

TEST(MachTime, CountsNanosecondsOfTheSteadyClock) {
    mach_timebase_info_data_t base{};
    ASSERT_EQ(mach_timebase_info(&base), KERN_SUCCESS);
    EXPECT_EQ(mach_timebase_info(nullptr), KERN_INVALID_ARGUMENT);

    const auto before = std::chrono::steady_clock::now();
    const uint64_t start = mach_absolute_time();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const uint64_t end = mach_absolute_time();
    const auto after = std::chrono::steady_clock::now();
    const auto counted = std::chrono::nanoseconds((end - start) * base.numer / base.denom);
    EXPECT_GE(counted, std::chrono::milliseconds(20));
    EXPECT_LE(counted, after - before);
}

TEST(ProcessorRate, PrefersTheRateSoldThenTheHighestThenTheCurrent) {
    const test::TempDir root;
    const std::string scaling = root / "sys/devices/system/cpu/cpu0/cpufreq/";
    EXPECT_EQ(cv::processorRate(root.path()), std::nullopt);

    test::writeFile(root / "proc/cpuinfo", "processor\t: 0\nmodel name\t: cpu MHz\n");
    EXPECT_EQ(cv::processorRate(root.path()), std::nullopt);
    test::writeFile(root / "proc/cpuinfo",
                    "processor\t: 0\ncpu MHz\t\t: 2445.428\n\nprocessor\t: 1\ncpu MHz\t\t: 9.5\n");
    EXPECT_EQ(cv::processorRate(root.path()), 2'445'428'000u);
    test::writeFile(scaling + "cpuinfo_max_freq", "5700000\n");
    EXPECT_EQ(cv::processorRate(root.path()), 5'700'000'000u);
    test::writeFile(scaling + "base_frequency", "0\n");
    EXPECT_EQ(cv::processorRate(root.path()), 5'700'000'000u);
    test::writeFile(scaling + "base_frequency", "3100000\n");
    EXPECT_EQ(cv::processorRate(root.path()), 3'100'000'000u);

    for (const char* nonsense : {"", "fast", "-1", "0.0", "inf", "1e300"}) {
        const test::TempDir other;
        test::writeFile(other / "proc/cpuinfo", std::string("cpu MHz : ") + nonsense + "\n");
        EXPECT_EQ(cv::processorRate(other.path()), std::nullopt) << nonsense;
    }
}

TEST(Sysctl, KnowsTheProcessorsRateWhereLinuxTellsIt) {
    std::array<int, 4> mib{};
    size_t count = mib.size();
    ASSERT_EQ(sysctlnametomib("hw.cpufrequency", mib.data(), &count), 0);
    EXPECT_EQ(count, 2u);

    const auto expected = cv::processorRate("");
    uint64_t value = 0;
    size_t length = sizeof value;
    const int result = sysctl(mib.data(), 2, &value, &length, nullptr, 0);
    EXPECT_EQ(result, expected ? 0 : -1);
    EXPECT_EQ(length, sizeof value);
    EXPECT_EQ(value == 0, !expected);
    if (!expected) {
        EXPECT_EQ(errno, ENOENT);
        return;
    }
    length = 4;
    EXPECT_EQ(sysctl(mib.data(), 2, &value, &length, nullptr, 0), -1);
    EXPECT_EQ(errno, ENOMEM);
    EXPECT_EQ(length, sizeof value);
    EXPECT_EQ(sysctl(mib.data(), 2, nullptr, &length, nullptr, 0), 0);
}

TEST(Sysctl, RefusesTheRest) {
    std::array<int, 4> mib{6, 15};
    size_t count = 1;
    EXPECT_EQ(sysctlnametomib("hw.cpufrequency", mib.data(), &count), -1);
    EXPECT_EQ(errno, ENOMEM);
    count = 4;
    EXPECT_EQ(sysctlnametomib("hw.cpufrequency_max", mib.data(), &count), -1);
    EXPECT_EQ(errno, ENOENT);

    uint64_t value = 0;
    size_t length = sizeof value;
    EXPECT_EQ(sysctl(mib.data(), 2, nullptr, nullptr, &value, sizeof value), -1);
    EXPECT_EQ(errno, EPERM);
    mib[1] = 3;
    EXPECT_EQ(sysctl(mib.data(), 2, &value, &length, nullptr, 0), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST(OSAtomic, AddsWithoutLosingAnyAndWraps) {
    int32_t value = 0;
    std::array<std::thread, 4> threads;
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            for (int n = 0; n < 50'000; ++n) {
                OSAtomicAdd32(1, &value);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(value, 200'000);
    value = INT_MAX;
    EXPECT_EQ(OSAtomicAdd32(1, &value), INT_MIN);
}

TEST(OSAtomic, StoresOnlyOverTheExpectedValue) {
    int32_t value = 5;
    EXPECT_FALSE(OSAtomicCompareAndSwap32(4, 9, &value));
    EXPECT_EQ(value, 5);
    EXPECT_TRUE(OSAtomicCompareAndSwap32(5, 9, &value));
    EXPECT_EQ(value, 9);
}

}  // namespace
