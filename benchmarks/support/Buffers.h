#pragma once

#include <cstddef>

/// Memory for the benchmarks, made outside of what they measure.
namespace bench {

/// The number of elements that stay in the first cache, and of those that come from memory.
constexpr std::size_t IN_CACHE = 4096;
constexpr std::size_t IN_MEMORY = std::size_t{16} << 20;

/// IN_MEMORY elements with the same pseudo-random values at every call; they live as long as the program. Integers take
/// their whole range; floating values lie between -0.999 and 0.999. None is zero for long: some processors store zeros
/// faster.
template <typename T>
T const* source();

/// A destination for IN_MEMORY elements of up to 8 bytes, every page of it touched.
void* destination();

template <typename T>
T* destinationOf() {
    return static_cast<T*>(destination());
}

}  // namespace bench
