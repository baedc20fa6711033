#pragma once

#include <cstddef>
#include <cstdint>

/// One element of each conversion. The plain loops consist of these, and the vector loops finish with them.
///
/// Everything here has internal linkage: each file that includes this is compiled for another instruction set, and the
/// linker must not choose one file's copy for all of them.
namespace IPP::Detail {
namespace {

/// Truncation toward zero; NaN and values that 32 bits cannot hold give -2147483648, as Intel processors answer.
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
    To operator()(From x) const { return static_cast<To>(x) * multiplier; }
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
        float const product = x * multiplier;
        std::int32_t const value = truncate(rounded ? product + halfLike(x) : product);
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
        float const product = x * multiplier;
        return truncate(rounded ? product + halfLike(product) : product);
    }
};

/// Applies a conversion to `n` elements, one by one from the first.
template <typename Operation>
[[maybe_unused, gnu::always_inline]] inline void convertEach(Operation const& operation, std::size_t n,
                                                             typename Operation::Source const* src,
                                                             typename Operation::Result* dst) {
    for (std::size_t i = 0; i < n; ++i) {
        dst[i] = operation(src[i]);
    }
}

}  // namespace
}  // namespace IPP::Detail
