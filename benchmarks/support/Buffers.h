#pragma once

#include <cstddef>

/// Memory for the benchmarks, made outside of what they measure.
namespace bench {

/// The number of elements that stay in the first cache, and of those that come from memory.
constexpr std::size_t IN_CACHE = 4096;
constexpr std::size_t IN_MEMORY = std::size_t{16} << 20;

/// `n` elements, IN_CACHE or IN_MEMORY, with the same pseudo-random values at every call; they live as long as the
/// program. Integers take their whole range; floating values lie between -0.999 and 0.999. None is zero for long: some
/// processors store zeros faster.
template <typename T>
const T* source(std::size_t n);

/// A place for `n` elements of up to 8 bytes that are made of `source<T>(n)`, every page of it touched. In cache it
/// follows the source at once: how much of two areas the first cache can hold depends on their addresses.
template <typename T>
void* destinationFor(std::size_t n);

template <typename From, typename To = From>
To* destination(std::size_t n) {
    return static_cast<To*>(destinationFor<From>(n));
}

}  // namespace bench
