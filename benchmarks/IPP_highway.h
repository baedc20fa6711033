#pragma once

#include <cstddef>

namespace bench {

/// Samples of 32 bits to floats, ±1.0 at full scale, in a loop over Highway's vectors; `n` is a multiple of 64. Only
/// where Highway is installed.
void highwayIntToFloat(std::size_t n, const int* src, float* dst);

}  // namespace bench
