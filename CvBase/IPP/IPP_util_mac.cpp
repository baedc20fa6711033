#include "CvBase/IPP/IPP_util_mac.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "CvBase/IPP/kernels/KernelChoice.h"

namespace IPP {
namespace {

const Detail::Kernels& kernels() {
    return Detail::activeKernels();
}

/// The 32-bit integer 1 shifted left by `bits` mod 32: the shift by 31 gives the smallest integer.
std::int32_t shiftedOne(unsigned int bits) {
    return static_cast<std::int32_t>(std::uint32_t{1} << (bits & 31U));
}

/// 2^-scale; infinite or 0 where T has no such value.
template <typename T>
T powerOfTwo(int scale) {
    constexpr int BEYOND_EVERY_EXPONENT = 4096;
    // What audio uses is one division: ldexp() takes a tenth of what converting 4096 samples does.
    if (scale >= 0 && scale < 32) {
        return T{1} / static_cast<T>(std::uint32_t{1} << static_cast<unsigned int>(scale));
    }
    return std::ldexp(T{1}, -std::clamp(scale, -BEYOND_EVERY_EXPONENT, BEYOND_EVERY_EXPONENT));
}

template <typename T>
void fill(unsigned int n, T* dst, T value) {
    if (n == 0) {
        return;
    }
    // The comparison takes -0.0 for zero.
    if (value == T{0}) {
        Detail::zero(n, dst);
        return;
    }
    unsigned char bytes[sizeof(std::uint64_t)];
    for (std::size_t at = 0; at < sizeof bytes; at += sizeof value) {
        std::memcpy(bytes + at, &value, sizeof value);
    }
    std::uint64_t pattern;
    std::memcpy(&pattern, bytes, sizeof pattern);
    kernels().fill(std::size_t{n} * sizeof value, dst, pattern);
}

}  // namespace

void Convert(unsigned int n, const unsigned char* src, float* dst) {
    kernels().byteToFloat(n, src, dst);
}

void Convert(unsigned int n, const short* src, float* dst, int scale) {
    kernels().shortToFloat(n, src, dst, 1.0F / static_cast<float>(shiftedOne(static_cast<unsigned int>(scale))));
}

void Convert(unsigned int n, const short* src, double* dst, int scale) {
    kernels().shortToDouble(n, src, dst, 1.0 / shiftedOne(static_cast<unsigned int>(scale)));
}

void Convert(unsigned int n, const int* src, float* dst, int scale) {
    kernels().intToFloat(n, src, dst, powerOfTwo<float>(scale));
}

void Convert(unsigned int n, const int* src, double* dst, int scale) {
    kernels().intToDouble(n, src, dst, powerOfTwo<double>(scale));
}

void Convert(unsigned int n, const float* src, short* dst, int scale, bool round) {
    const auto multiplier = static_cast<float>(shiftedOne(0U - static_cast<unsigned int>(scale)));
    const auto convert = round ? kernels().floatToShortRounded : kernels().floatToShort;
    convert(n, src, dst, multiplier);
}

void Convert(unsigned int n, const float* src, int* dst, int scale, bool round) {
    const auto multiplier = powerOfTwo<float>(scale);
    // From 2^31 on, inputs of full scale and beyond leave the range of 32 bits, and their answer is the same unclamped.
    if (scale == 0 || multiplier >= 2147483648.0F) {
        const auto convert = round ? kernels().floatToIntRounded : kernels().floatToInt;
        convert(n, src, dst, multiplier);
    } else {
        const auto convert = round ? kernels().clampedFloatToIntRounded : kernels().clampedFloatToInt;
        convert(n, src, dst, multiplier);
    }
}

void Convert(unsigned int, const float*, unsigned char*, int, bool) {}

void Convert(unsigned int, const double*, int*, int, bool) {}

void Convert(unsigned int n, const float* src, double* dst) {
    kernels().floatToDouble(n, src, dst);
}

void Convert(unsigned int n, const double* src, float* dst) {
    kernels().doubleToFloat(n, src, dst);
}

void Set(unsigned int n, short* dst, short value) {
    fill(n, dst, value);
}

void Set(unsigned int n, int* dst, int value) {
    fill(n, dst, value);
}

void Set(unsigned int n, unsigned int* dst, unsigned int value) {
    fill(n, dst, value);
}

void Set(unsigned int n, float* dst, float value) {
    fill(n, dst, value);
}

void Set(unsigned int n, double* dst, double value) {
    fill(n, dst, value);
}

bool Equal(unsigned int n, const unsigned char* a, const unsigned char* b) {
    return kernels().equal(n, a, b);
}

}  // namespace IPP
