#include <CoreFoundation/CFDate.h>

#include <ctime>

CFAbsoluteTime CFAbsoluteTimeGetCurrent() {
    constexpr time_t SECONDS_FROM_1970_TO_2001 = 978307200;
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<double>(now.tv_sec - SECONDS_FROM_1970_TO_2001) + static_cast<double>(now.tv_nsec) * 1e-9;
}
