#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

/// One element of each conversion. The plain loops consist of these, and the vector loops finish with them.
///
/// Everything here has internal linkage: each file that includes this is compiled for another instruction set, and the
/// linker must not choose one file's copy for all of them.
namespace IPP::Detail {
namespace {

/// Truncation toward zero; NaN and values that 32 bits cannot hold give -2147483648, as on Intel processors.
[[maybe_unused, gnu::always_inline]] inline std::int32_t truncate(float x) {
    return x >= -2147483648.0F && x < 2147483648.0F ? static_cast<std::int32_t>(x) : INT32_MIN;
}

/// 0.5 with the sign that the comparison with zero gives: +0.5 for -0.0.
[[maybe_unused, gnu::always_inline]] inline float halfLike(float x) {
    return 0.0F <= x ? 0.5F : -0.5F;
}

struct ByteToFloat {
    using Source = unsigned char;
    using Result = float;
    float operator()(unsigned char x) const { return static_cast<float>(x); }
};

template <typename From, typename To>
struct Scale {
    using Source = From;
    using Result = To;
    To multiplier;
    /// Zero times infinity is a NaN, whose sign each kind of processor chooses: here it is always Intel's.
    To operator()(From x) const {
        constexpr To INTELS_NAN = -std::numeric_limits<To>::quiet_NaN();
        const To product = static_cast<To>(x) * multiplier;
        return __builtin_isnan(product) ? INTELS_NAN : product;
    }
};

struct FloatToDouble {
    using Source = float;
    using Result = double;
    double operator()(float x) const { return static_cast<double>(x); }
};

struct DoubleToFloat {
    using Source = double;
    using Result = float;
    float operator()(double x) const { return static_cast<float>(x); }
};

template <bool rounded>
struct FloatToShort {
    using Source = float;
    using Result = short;
    float multiplier;
    short operator()(float x) const {
        const float product = x * multiplier;
        const std::int32_t value = truncate(rounded ? product + halfLike(x) : product);
        return static_cast<short>(value > 32767 ? 32767 : value < -32768 ? -32768 : value);
    }
};

template <bool rounded, bool clamped>
struct FloatToInt {
    using Source = float;
    using Result = int;
    float multiplier;
    int operator()(float x) const {
        if (clamped) {
            x = x >= 1.0F ? 1.0F : x <= -1.0F ? -1.0F : x;
        }
        const float product = x * multiplier;
        return truncate(rounded ? product + halfLike(product) : product);
    }
};

/// Applies a conversion to `n` elements, one by one from the first. The elements go through memcpy, so that neither
/// their alignment nor a destination that is the source matters.
template <typename Operation>
[[maybe_unused, gnu::always_inline]] inline void convertEach(const Operation& operation, std::size_t n,
                                                             const typename Operation::Source* src,
                                                             typename Operation::Result* dst) {
    for (std::size_t i = 0; i < n; ++i) {
        typename Operation::Source element;
        std::memcpy(&element, src + i, sizeof element);
        const typename Operation::Result result = operation(element);
        std::memcpy(dst + i, &result, sizeof result);
    }
}

/// Fills `size` bytes with the eight bytes of `pattern`, in memory order, over and over.
[[maybe_unused, gnu::always_inline]] inline void fillEach(std::size_t size, unsigned char* dst, std::uint64_t pattern) {
    std::size_t done = 0;
    for (; size - done >= sizeof pattern; done += sizeof pattern) {
        std::memcpy(dst + done, &pattern, sizeof pattern);
    }
    for (const unsigned char* from = reinterpret_cast<const unsigned char*>(&pattern); done < size; ++done) {
        dst[done] = *from++;
    }
}

/// Compares byte by byte from the first on, eight at a time.
[[maybe_unused, gnu::always_inline]] inline bool equalEach(std::size_t size, const unsigned char* a,
                                                           const unsigned char* b) {
    std::size_t done = 0;
    for (; size - done >= sizeof(std::uint64_t); done += sizeof(std::uint64_t)) {
        std::uint64_t left;
        std::uint64_t right;
        std::memcpy(&left, a + done, sizeof left);
        std::memcpy(&right, b + done, sizeof right);
        if (left != right) {
            return false;
        }
    }
    for (; done < size; ++done) {
        if (a[done] != b[done]) {
            return false;
        }
    }
    return true;
}

}  // namespace
}  // namespace IPP::Detail
