#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace cv {

/// The rate of the first processor in hertz, from the files of Linux below `root` ("" for the machine itself): the rate
/// it was sold with, else the highest that it reaches, else the one it runs at now. Nothing when none of them is known.
std::optional<std::uint64_t> processorRate(const std::string& root);

}  // namespace cv
