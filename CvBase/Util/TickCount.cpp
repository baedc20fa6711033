#include "CvBase/Util/TickCount.h"

#include <CoreFoundation/CoreFoundation.h>
#include <mach/mach_time.h>
#include <sys/sysctl.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <ctime>

namespace Util {

int GetTimeSeconds() {
    return static_cast<std::int32_t>(std::time(nullptr));
}

unsigned int GetTickCountMillis() {
    const double millis = CFAbsoluteTimeGetCurrent() * 1000.0;
    const double rounded = std::trunc(millis + (millis < 0.0 ? -0.5 : 0.5));
    // The remainder is exact, and converts whatever the clock is set to.
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(std::fmod(rounded, 0x1p32)));
}

double GetCycleCountSeconds() {
    const auto count = static_cast<double>(mach_absolute_time());
    mach_timebase_info_data_t base{};
    mach_timebase_info(&base);
    return count * base.numer / base.denom * 1e-9;
}

double GetCPUCyclesPerSecond() {
    std::array<int, 4> identifier{};
    std::size_t components = identifier.size();
    if (sysctlnametomib("hw.cpufrequency", identifier.data(), &components) != 0) {
        return 0.0;
    }
    std::uint64_t rate = 0;
    std::size_t size = sizeof rate;
    if (sysctl(identifier.data(), static_cast<unsigned int>(components), &rate, &size, nullptr, 0) != 0) {
        return 0.0;
    }
    return static_cast<std::uint32_t>(rate);
}

void TimeMeasureStart(bool) {}

void TimeMeasureEnd(bool, const char*) {}

}  // namespace Util
