#include "CvBase/Util/TickCount.h"

#include <gmock/gmock.h>

#include <chrono>
#include <ctime>
#include <thread>

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds PAUSE{250};

double millis(steady_clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

TEST(TickCount, TimeSecondsAreThoseOfTheWallClock) {
    const auto before = static_cast<int>(std::time(nullptr));
    const int seconds = Util::GetTimeSeconds();
    EXPECT_GE(seconds, before);
    EXPECT_LE(seconds, static_cast<int>(std::time(nullptr)));
}

TEST(TickCount, EveryClockPassesAsTimeDoes) {
    const auto before = steady_clock::now();
    const double startSeconds = Util::GetCycleCountSeconds();
    const unsigned int startMillis = Util::GetTickCountMillis();
    const auto inner = steady_clock::now();
    std::this_thread::sleep_for(PAUSE);
    const double slept = millis(steady_clock::now() - inner);
    const unsigned int passedMillis = Util::GetTickCountMillis() - startMillis;
    const double passedSeconds = Util::GetCycleCountSeconds() - startSeconds;
    const double whole = millis(steady_clock::now() - before);

    EXPECT_GE(passedMillis, slept - 1);
    EXPECT_LE(passedMillis, whole + 1);
    EXPECT_GE(passedSeconds * 1000, slept - 0.01);
    EXPECT_LE(passedSeconds * 1000, whole + 0.01);
}

}  // namespace
