#include "CvBase/Util/TickCount.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <thread>

namespace {

TEST(TickCount, EveryClockPassesAsTimeDoes) {
    using std::chrono::steady_clock;
    const auto millisSince = [](steady_clock::time_point start) {
        return std::chrono::duration<double, std::milli>(steady_clock::now() - start).count();
    };
    const auto wallBefore = static_cast<int>(std::time(nullptr));
    const auto before = steady_clock::now();
    const double startSeconds = Util::GetCycleCountSeconds();
    const unsigned int startMillis = Util::GetTickCountMillis();
    const auto inner = steady_clock::now();
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    const double slept = millisSince(inner);
    const unsigned int passedMillis = Util::GetTickCountMillis() - startMillis;
    const double passedSeconds = Util::GetCycleCountSeconds() - startSeconds;
    const double whole = millisSince(before);

    EXPECT_GE(passedMillis, slept - 1);
    EXPECT_LE(passedMillis, whole + 1);
    EXPECT_GE(passedSeconds * 1000, slept - 0.01);
    EXPECT_LE(passedSeconds * 1000, whole + 0.01);
    EXPECT_GE(Util::GetTimeSeconds(), wallBefore);
    EXPECT_LE(Util::GetTimeSeconds(), static_cast<int>(std::time(nullptr)));
}

}  // namespace
