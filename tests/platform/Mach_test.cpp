#include <mach/mach_time.h>
#include <sys/sysctl.h>

#include <chrono>

#include "platform/Mach/ProcessorRate.h"
#include "tests/support/Test.h"

namespace {

using namespace test;

TEST(ProcessorRate, PrefersTheRateSoldThenTheHighestThenTheCurrent) {
    const TempDir root;
    const std::string scaling = root / "sys/devices/system/cpu/cpu0/cpufreq/";
    EXPECT_EQ(cv::processorRate(root.path()), std::nullopt);

    for (const char* nonsense : {"", "fast", "-1", "0.0", "inf", "1e300"}) {
        writeFile(root / "proc/cpuinfo", std::string("cpu MHz : ") + nonsense + "\n");
        EXPECT_EQ(cv::processorRate(root.path()), std::nullopt) << nonsense;
    }
    writeFile(root / "proc/cpuinfo", "model name\t: cpu MHz\ncpu MHz\t\t: 2445.428\n\ncpu MHz\t\t: 9.5\n");
    EXPECT_EQ(cv::processorRate(root.path()), 2'445'428'000u);
    writeFile(scaling + "cpuinfo_max_freq", "5700000\n");
    EXPECT_EQ(cv::processorRate(root.path()), 5'700'000'000u);
    writeFile(scaling + "base_frequency", "3100000\n");
    EXPECT_EQ(cv::processorRate(root.path()), 3'100'000'000u);
}

TEST(MachAbsoluteTime, CountsTheUnitsOfItsTimebaseOnTheMonotonicClock) {
    mach_timebase_info_data_t base{};
    ASSERT_EQ(mach_timebase_info(&base), KERN_SUCCESS);
    const auto before = std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
    const auto now = static_cast<std::int64_t>(mach_absolute_time() * base.numer / base.denom);
    EXPECT_GE(now, before);
    EXPECT_LE(now, std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1));
}

TEST(Sysctl, KnowsTheProcessorsRateWhereLinuxTellsItAndNothingElse) {
    int mib[2] = {};
    size_t count = 2;
    EXPECT_EQ(sysctlnametomib("hw.cpufrequency_max", mib, &count), -1);
    ASSERT_EQ(sysctlnametomib("hw.cpufrequency", mib, &count), 0);
    count = 1;
    EXPECT_EQ(sysctlnametomib("hw.cpufrequency", mib, &count), -1) << "no room";

    const auto expected = cv::processorRate("");
    uint64_t value = 0;
    size_t length = sizeof value;
    EXPECT_EQ(sysctl(mib, 2, &value, &length, nullptr, 0), expected ? 0 : -1);
    EXPECT_EQ(value == 0, !expected);
    length = 4;
    EXPECT_EQ(sysctl(mib, 2, &value, &length, nullptr, 0), -1);
    mib[1] = 3;
    length = sizeof value;
    EXPECT_EQ(sysctl(mib, 2, &value, &length, nullptr, 0), -1);
}

}  // namespace
