#include <gmock/gmock.h>
#include <sys/sysctl.h>

#include <array>
#include <cerrno>

#include "platform/Mach/ProcessorRate.h"
#include "tests/support/TempDir.h"

namespace {

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

int readValue(std::array<int, 2> mib, void* value, size_t* length) {
    errno = 0;
    return sysctl(mib.data(), 2, value, length, nullptr, 0) == 0 ? 0 : errno;
}

TEST(Sysctl, KnowsTheProcessorsRateWhereLinuxTellsItAndNothingElse) {
    std::array<int, 2> mib{};
    size_t count = 1;
    EXPECT_EQ(sysctlnametomib("hw.cpufrequency", mib.data(), &count), -1);
    EXPECT_EQ(errno, ENOMEM);
    count = 2;
    EXPECT_EQ(sysctlnametomib("hw.cpufrequency_max", mib.data(), &count), -1);
    EXPECT_EQ(errno, ENOENT);
    ASSERT_EQ(sysctlnametomib("hw.cpufrequency", mib.data(), &count), 0);
    EXPECT_EQ(count, 2u);

    const auto expected = cv::processorRate("");
    uint64_t value = 0;
    size_t length = sizeof value;
    EXPECT_EQ(readValue(mib, &value, &length), expected ? 0 : ENOENT);
    EXPECT_EQ(length, sizeof value);
    EXPECT_EQ(value == 0, !expected);
    length = 4;
    EXPECT_EQ(readValue(mib, &value, &length), expected ? ENOMEM : ENOENT);
    EXPECT_EQ(sysctl(mib.data(), 2, nullptr, nullptr, &value, sizeof value), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(readValue({6, 3}, &value, &length), ENOENT);
}

}  // namespace
