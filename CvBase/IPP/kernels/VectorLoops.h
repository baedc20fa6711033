#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "CvBase/IPP/kernels/Elements.h"
#include "CvBase/IPP/kernels/Kernels.h"

/// The loops of the vector paths, written once over the operations that an instruction set (`Isa`) offers:
///
/// - `WIDTH`, the bytes of a vector, and `LANES`, the floats in it;
/// - loads that need no alignment: `loadFloats`, `loadInts`; `widenBytes`, `widenShorts` to a vector of ints;
///   `widenShortsToDoubles`, `widenIntsToDoubles`, `widenFloats` to one of doubles; `narrowDoubles` to floats, a vector
///   of them or half of one;
/// - arithmetic: `broadcast`, `multiply`, `toFloats`, `truncate`, `packShorts`; `halfLike`, which is 0.5 with the sign
///   bit of x; `clamp` to -1.0 .. 1.0, where a NaN stays;
/// - `multiplyAdd`, which may round once: the multiplier is a power of two, so that the product is exact, or else so
///   small that the half added to it does not notice its rounding;
/// - `store` (no alignment needed), `stream` (aligned, past the caches), `fence` after streaming;
/// - `sameBytes` and `sameBytes4`: whether one or four vectors of memory agree.
///
/// As in Elements.h, everything has internal linkage.
namespace IPP::Detail {
namespace {

/// The unit in which memory and caches exchange bytes.
constexpr std::size_t LINE = 64;

/// A call that reads and writes this many bytes leaves nothing in the caches that its caller can still use, so its
/// stores go past them: that saves reading the destination's lines first.
constexpr std::size_t STREAMING_BYTES = std::size_t{32} << 20;

/// From this many bytes of destination on, reaching an aligned address element by element pays.
constexpr std::size_t ALIGNING_BYTES = 2048;

/// Makes one vector of results, or half of one, from as many elements as it takes. An instruction set that has a faster
/// way specialises it.
template <typename Isa, typename Operation>
struct Block;

template <typename Isa>
struct Block<Isa, ByteToFloat> {
    explicit Block(ByteToFloat) {}
    auto operator()(const unsigned char* src) const { return Isa::toFloats(Isa::widenBytes(src)); }
};

/// As many integers as fill a vector of the second argument's type, converted to it.
template <typename Isa>
auto widened(const short* src, float) {
    return Isa::toFloats(Isa::widenShorts(src));
}
template <typename Isa>
auto widened(const short* src, double) {
    return Isa::widenShortsToDoubles(src);
}
template <typename Isa>
auto widened(const int* src, float) {
    return Isa::toFloats(Isa::loadInts(src));
}
template <typename Isa>
auto widened(const int* src, double) {
    return Isa::widenIntsToDoubles(src);
}

template <typename Isa, typename In, typename Out>
struct Block<Isa, Scale<In, Out>> {
    explicit Block(Scale<In, Out> operation) : multiplier(Isa::broadcast(operation.multiplier)) {}
    auto operator()(const In* src) const { return Isa::multiply(widened<Isa>(src, Out()), multiplier); }
    decltype(Isa::broadcast(Out())) multiplier;
};

template <typename Isa>
struct Block<Isa, FloatToDouble> {
    explicit Block(FloatToDouble) {}
    auto operator()(const float* src) const { return Isa::widenFloats(src); }
};

template <typename Isa>
struct Block<Isa, DoubleToFloat> {
    explicit Block(DoubleToFloat) {}
    auto operator()(const double* src) const { return Isa::narrowDoubles(src); }
};

/// The sign of x serves for that of the product too: to 32 bits the multiplier is never negative. And -0.0, whose half
/// is -0.5 here, gives 0 either way.
template <typename Isa, bool rounded>
[[gnu::always_inline]] inline typename Isa::Ints scaledAndTruncated(typename Isa::Floats x,
                                                                    typename Isa::Floats multiplier) {
    return Isa::truncate(rounded ? Isa::multiplyAdd(x, multiplier, Isa::halfLike(x)) : Isa::multiply(x, multiplier));
}

template <typename Isa, bool rounded>
struct Block<Isa, FloatToShort<rounded>> {
    explicit Block(FloatToShort<rounded> operation) : multiplier(Isa::broadcast(operation.multiplier)) {}
    auto operator()(const float* src) const { return Isa::packShorts(scaled(src), scaled(src + Isa::LANES)); }
    typename Isa::Ints scaled(const float* src) const {
        return scaledAndTruncated<Isa, rounded>(Isa::loadFloats(src), multiplier);
    }
    typename Isa::Floats multiplier;
};

template <typename Isa, bool rounded, bool clamped>
struct Block<Isa, FloatToInt<rounded, clamped>> {
    explicit Block(FloatToInt<rounded, clamped> operation) : multiplier(Isa::broadcast(operation.multiplier)) {}
    auto operator()(const float* src) const {
        const typename Isa::Floats x = Isa::loadFloats(src);
        return scaledAndTruncated<Isa, rounded>(clamped ? Isa::clamp(x) : x, multiplier);
    }
    typename Isa::Floats multiplier;
};

/// The number of results that a block makes at a time.
template <typename Isa, typename Operation>
constexpr std::size_t COUNT_OF = sizeof(std::declval<Block<Isa, Operation>>()(nullptr)) /
                                 sizeof(typename Operation::Result);

/// Asks for the `size` bytes that come some way after `address`, also past the end of the array, which is allowed:
/// nothing is read.
template <std::size_t size>
[[gnu::always_inline]] inline void prefetch(const void* address) {
    constexpr std::uintptr_t AHEAD = 1024;
    for (std::uintptr_t at = 0; at < size; at += LINE) {
        __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(address) + AHEAD + at), 0, 0);
    }
}

/// The bytes from `address` to the next multiple of `alignment`.
inline std::size_t bytesToAlignment(const void* address, std::size_t alignment) {
    return (std::size_t{0} - reinterpret_cast<std::uintptr_t>(address)) & (alignment - 1);
}

/// Converts whole lines of an aligned destination with stores past the caches; gives the number of elements converted.
template <typename Isa, typename Operation>
[[gnu::always_inline]] inline std::size_t streamLines(const Block<Isa, Operation>& block, std::size_t n,
                                                      const typename Operation::Source* src,
                                                      typename Operation::Result* dst) {
    constexpr std::size_t COUNT = COUNT_OF<Isa, Operation>;
    constexpr std::size_t COUNT_IN_LINE = LINE / sizeof(typename Operation::Result);
    std::size_t done = 0;
    for (; n - done >= COUNT_IN_LINE; done += COUNT_IN_LINE) {
        prefetch<COUNT_IN_LINE * sizeof(typename Operation::Source)>(src + done);
        for (std::size_t i = 0; i < COUNT_IN_LINE; i += COUNT) {
            Isa::stream(dst + done + i, block(src + done + i));
        }
    }
    Isa::fence();
    return done;
}

/// Converts whole vectors, four in a step; gives the number of elements converted. What is stored was read before, so
/// that the destination may be the source.
template <typename Isa, typename Operation>
[[gnu::always_inline]] inline std::size_t storeVectors(const Block<Isa, Operation>& block, std::size_t n,
                                                       const typename Operation::Source* src,
                                                       typename Operation::Result* dst) {
    constexpr std::size_t COUNT = COUNT_OF<Isa, Operation>;
    std::size_t done = 0;
    for (; n - done >= 4 * COUNT; done += 4 * COUNT) {
        // Elements of one size keep reading and storing in step, which saves them a twentieth. Others lose a tenth so.
        if constexpr (sizeof(typename Operation::Source) == sizeof(typename Operation::Result)) {
            Isa::store(dst + done, block(src + done));
            Isa::store(dst + done + COUNT, block(src + done + COUNT));
            Isa::store(dst + done + 2 * COUNT, block(src + done + 2 * COUNT));
            Isa::store(dst + done + 3 * COUNT, block(src + done + 3 * COUNT));
            continue;
        }
        const auto first = block(src + done);
        const auto second = block(src + done + COUNT);
        const auto third = block(src + done + 2 * COUNT);
        const auto fourth = block(src + done + 3 * COUNT);
        Isa::store(dst + done, first);
        Isa::store(dst + done + COUNT, second);
        Isa::store(dst + done + 2 * COUNT, third);
        Isa::store(dst + done + 3 * COUNT, fourth);
    }
    for (; n - done >= COUNT; done += COUNT) {
        Isa::store(dst + done, block(src + done));
    }
    return done;
}

template <typename Isa, typename Operation>
void convertAll(const Operation& operation, std::size_t n, const typename Operation::Source* src,
                typename Operation::Result* dst) {
    using Result = typename Operation::Result;
    const Block<Isa, Operation> block(operation);
    const std::size_t misalignment = bytesToAlignment(dst, LINE);
    std::size_t done = 0;
    if (n >= ALIGNING_BYTES / sizeof(Result) && misalignment % sizeof(Result) == 0) {
        done = misalignment / sizeof(Result);
        convertEach(operation, done, src, dst);
        if (n >= STREAMING_BYTES / (sizeof(typename Operation::Source) + sizeof(Result))) {
            done += streamLines(block, n - done, src + done, dst + done);
        }
    }
    done += storeVectors(block, n - done, src + done, dst + done);
    convertEach(operation, n - done, src + done, dst + done);
}

template <typename Isa, typename Operation>
void convert(std::size_t n, const typename Operation::Source* src, typename Operation::Result* dst) {
    convertAll<Isa>(Operation{}, n, src, dst);
}

template <typename Isa, typename Operation, typename Multiplier>
void convertScaled(std::size_t n, const typename Operation::Source* src, typename Operation::Result* dst,
                   Multiplier multiplier) {
    convertAll<Isa>(Operation{multiplier}, n, src, dst);
}

/// The pattern as it continues `offset` bytes further on, on a little-endian processor.
inline std::uint64_t continued(std::uint64_t pattern, std::size_t offset) {
    const unsigned int bits = offset % sizeof pattern * 8;
    return bits == 0 ? pattern : pattern >> bits | pattern << (64 - bits);
}

template <typename Isa>
void fill(std::size_t size, void* dst, std::uint64_t pattern) {
    auto* const bytes = static_cast<unsigned char*>(dst);
    if (size < Isa::WIDTH) {
        fillEach(size, bytes, pattern);
        return;
    }
    // The first and the last vector need no alignment and overlap the aligned ones between them.
    const auto start = Isa::broadcast(pattern);
    Isa::store(bytes, start);
    std::size_t done = bytesToAlignment(bytes, Isa::WIDTH);
    const auto middle = Isa::broadcast(continued(pattern, done));
    if (size >= STREAMING_BYTES) {
        for (; size - done >= 4 * Isa::WIDTH; done += 4 * Isa::WIDTH) {
            Isa::stream(bytes + done, middle);
            Isa::stream(bytes + done + Isa::WIDTH, middle);
            Isa::stream(bytes + done + 2 * Isa::WIDTH, middle);
            Isa::stream(bytes + done + 3 * Isa::WIDTH, middle);
        }
        Isa::fence();
    }
    for (; size - done >= 4 * Isa::WIDTH; done += 4 * Isa::WIDTH) {
        Isa::store(bytes + done, middle);
        Isa::store(bytes + done + Isa::WIDTH, middle);
        Isa::store(bytes + done + 2 * Isa::WIDTH, middle);
        Isa::store(bytes + done + 3 * Isa::WIDTH, middle);
    }
    for (; size - done >= Isa::WIDTH; done += Isa::WIDTH) {
        Isa::store(bytes + done, middle);
    }
    Isa::store(bytes + size - Isa::WIDTH, Isa::broadcast(continued(pattern, size - Isa::WIDTH)));
}

template <typename Isa>
bool equal(std::size_t size, const unsigned char* a, const unsigned char* b) {
    if (size < Isa::WIDTH) {
        return equalEach(size, a, b);
    }
    std::size_t done = 0;
    for (; size - done >= 4 * Isa::WIDTH; done += 4 * Isa::WIDTH) {
        if (!Isa::sameBytes4(a + done, b + done)) {
            return false;
        }
    }
    for (; size - done >= Isa::WIDTH; done += Isa::WIDTH) {
        if (!Isa::sameBytes(a + done, b + done)) {
            return false;
        }
    }
    return Isa::sameBytes(a + size - Isa::WIDTH, b + size - Isa::WIDTH);
}

template <typename Isa>
constexpr Kernels makeKernels() {
    return {
        convert<Isa, ByteToFloat>,
        convertScaled<Isa, Scale<short, float>, float>,
        convertScaled<Isa, Scale<short, double>, double>,
        convertScaled<Isa, Scale<int, float>, float>,
        convertScaled<Isa, Scale<int, double>, double>,
        convert<Isa, FloatToDouble>,
        convert<Isa, DoubleToFloat>,
        convertScaled<Isa, FloatToShort<false>, float>,
        convertScaled<Isa, FloatToShort<true>, float>,
        convertScaled<Isa, FloatToInt<false, false>, float>,
        convertScaled<Isa, FloatToInt<true, false>, float>,
        convertScaled<Isa, FloatToInt<false, true>, float>,
        convertScaled<Isa, FloatToInt<true, true>, float>,
        fill<Isa>,
        equal<Isa>,
    };
}

}  // namespace
}  // namespace IPP::Detail
