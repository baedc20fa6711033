#include <sys/sysctl.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "platform/Mach/ProcessorRate.h"

namespace {

/// CTL_HW, HW_CPU_FREQ.
constexpr std::array<int, 2> CPU_FREQUENCY{6, 15};

int fail(int error) {
    errno = error;
    return -1;
}

}  // namespace

int sysctlnametomib(const char* name, int* mib, size_t* count) {
    if (name == nullptr || std::strcmp(name, "hw.cpufrequency") != 0) {
        return fail(ENOENT);
    }
    if (mib == nullptr || count == nullptr || *count < CPU_FREQUENCY.size()) {
        return fail(ENOMEM);
    }
    std::memcpy(mib, CPU_FREQUENCY.data(), sizeof CPU_FREQUENCY);
    *count = CPU_FREQUENCY.size();
    return 0;
}

int sysctl(const int* mib, unsigned int count, void* oldValue, size_t* oldLength, const void* newValue, size_t) {
    if (mib == nullptr || count != CPU_FREQUENCY.size() ||
        std::memcmp(mib, CPU_FREQUENCY.data(), sizeof CPU_FREQUENCY) != 0) {
        return fail(ENOENT);
    }
    if (newValue != nullptr) {
        return fail(EPERM);
    }
    const auto rate = cv::processorRate("");
    if (!rate) {
        return fail(ENOENT);
    }
    if (oldLength == nullptr) {
        return 0;
    }
    const bool hasRoom = *oldLength >= sizeof *rate;
    *oldLength = sizeof *rate;
    if (oldValue == nullptr) {
        return 0;
    }
    if (!hasRoom) {
        return fail(ENOMEM);
    }
    std::memcpy(oldValue, &*rate, sizeof *rate);
    return 0;
}
