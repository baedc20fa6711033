#include <CoreFoundation/CFDate.h>
#include <gtest/gtest.h>

#include <chrono>

namespace {

TEST(CFDate, CountsSecondsFrom2001) {
    const auto seconds = [] {
        using namespace std::chrono;
        return duration<double>(system_clock::now().time_since_epoch()).count() - 978'307'200.0;
    };
    const double before = seconds();
    const CFAbsoluteTime now = CFAbsoluteTimeGetCurrent();
    const double after = seconds();
    EXPECT_GE(now, before - 1e-6);
    EXPECT_LE(now, after + 1e-6);
}

}  // namespace
