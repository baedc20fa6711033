#include "benchmarks/support/Buffers.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>

namespace bench {
namespace {

void* allocate(std::size_t size) {
    constexpr std::size_t PAGE = 4096;
    void* const memory = std::aligned_alloc(PAGE, size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

/// Marsaglia's xorshift: good enough, and far faster than the memory.
class Random {
public:
    std::uint64_t next() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        state_ ^= state_ << 17;
        return state_;
    }

private:
    std::uint64_t state_ = 0x9E3779B97F4A7C15U;
};

template <typename T>
T valueFrom(std::uint64_t bits) {
    if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(0.999 * static_cast<double>(static_cast<std::int32_t>(bits >> 32)) / 2147483648.0);
    } else {
        return static_cast<T>(bits >> 32);
    }
}

}  // namespace

template <typename T>
T const* source() {
    static T const* const values = [] {
        T* const made = static_cast<T*>(allocate(IN_MEMORY * sizeof(T)));
        Random random;
        for (std::size_t i = 0; i < IN_MEMORY; ++i) {
            made[i] = valueFrom<T>(random.next());
        }
        return made;
    }();
    return values;
}

template unsigned char const* source();
template short const* source();
template int const* source();
template float const* source();
template double const* source();

void* destination() {
    static void* const memory = [] {
        std::size_t const size = IN_MEMORY * sizeof(double);
        void* const made = allocate(size);
        std::memset(made, 0xA5, size);
        return made;
    }();
    return memory;
}

}  // namespace bench
