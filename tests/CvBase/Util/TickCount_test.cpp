#include "CvBase/Util/TickCount.h"

#include <chrono>
#include <ctime>
#include <thread>
#include "tests/support/Test.h"

namespace {

TEST(TickCount, SecondsPassAsTimeDoes) {
    const auto wallBefore = static_cast<int>(std::time(nullptr));
    const auto before = std::chrono::steady_clock::now();
    const double start = Util::GetCycleCountSeconds();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const double passed = Util::GetCycleCountSeconds() - start;
    const std::chrono::duration<double> whole = std::chrono::steady_clock::now() - before;

    EXPECT_GE(passed, 0.0999);
    EXPECT_LE(passed, whole.count() + 0.00001);
    EXPECT_GE(Util::GetTimeSeconds(), wallBefore);
    EXPECT_LE(Util::GetTimeSeconds(), static_cast<int>(std::time(nullptr)));
}

}  // namespace
