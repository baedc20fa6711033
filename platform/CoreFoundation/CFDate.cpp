#include <CoreFoundation/CFDate.h>

#include <ctime>

#include "platform/Epoch.h"

CFAbsoluteTime CFAbsoluteTimeGetCurrent() {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<double>(now.tv_sec - cv::SECONDS_FROM_1970_TO_2001) + static_cast<double>(now.tv_nsec) * 1e-9;
}
