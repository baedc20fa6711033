#include "benchmarks/support/Buffers.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>

namespace bench {
namespace {

constexpr std::size_t WIDEST = sizeof(double);

unsigned char* allocate(std::size_t size) {
    constexpr std::size_t PAGE = 4096;
    void* const memory = std::aligned_alloc(PAGE, size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    std::memset(memory, 0xA5, size);
    return static_cast<unsigned char*>(memory);
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

/// `n` values and room for as many more of any width.
template <typename T>
unsigned char* makeValues(std::size_t n) {
    unsigned char* const memory = allocate(n * (sizeof(T) + WIDEST));
    Random random;
    for (std::size_t i = 0; i < n; ++i) {
        const T value = valueFrom<T>(random.next());
        std::memcpy(memory + i * sizeof value, &value, sizeof value);
    }
    return memory;
}

template <typename T>
unsigned char* values(std::size_t n) {
    if (n == IN_CACHE) {
        static unsigned char* const inCache = makeValues<T>(IN_CACHE);
        return inCache;
    }
    static unsigned char* const inMemory = makeValues<T>(IN_MEMORY);
    return inMemory;
}

}  // namespace

template <typename T>
const T* source(std::size_t n) {
    return reinterpret_cast<const T*>(values<T>(n));
}

template <typename T>
void* destinationFor(std::size_t n) {
    return values<T>(n) + n * sizeof(T);
}

#define CV_BENCH_SOURCE(T)                 \
    template const T* source(std::size_t); \
    template void* destinationFor<T>(std::size_t);

CV_BENCH_SOURCE(unsigned char)
CV_BENCH_SOURCE(short)
CV_BENCH_SOURCE(int)
CV_BENCH_SOURCE(float)
CV_BENCH_SOURCE(double)

}  // namespace bench
