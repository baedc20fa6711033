#include "platform/Mach/ProcessorRate.h"

#include <cmath>
#include <fstream>
#include <sstream>

namespace cv {

namespace {

/// One number of kilohertz, as the frequency scaling of Linux writes it.
std::optional<std::uint64_t> fromScaling(const std::string& file) {
    std::uint64_t kilohertz = 0;
    if (!(std::ifstream(file) >> kilohertz) || kilohertz == 0) {
        return std::nullopt;
    }
    return kilohertz * 1000;
}

/// The first "cpu MHz : 2445.428" of the list of processors.
std::optional<std::uint64_t> fromProcessorList(const std::string& file) {
    std::ifstream list(file);
    for (std::string line; std::getline(list, line);) {
        const std::size_t colon = line.find(':');
        if (line.compare(0, 7, "cpu MHz") != 0 || colon == std::string::npos) {
            continue;
        }
        std::istringstream text(line.substr(colon + 1));
        text.imbue(std::locale::classic());
        double megahertz = 0;
        if (text >> megahertz && megahertz > 0 && megahertz < 1e9) {
            return static_cast<std::uint64_t>(std::llround(megahertz * 1e6));
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::uint64_t> processorRate(const std::string& root) {
    const std::string scaling = root + "/sys/devices/system/cpu/cpu0/cpufreq/";
    for (const char* name : {"base_frequency", "cpuinfo_max_freq"}) {
        if (const auto rate = fromScaling(scaling + name)) {
            return rate;
        }
    }
    return fromProcessorList(root + "/proc/cpuinfo");
}

}  // namespace cv
