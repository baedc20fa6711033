#pragma once

#include <cstddef>
#include <cstdint>

/// What the public routines of IPP come down to once their scale is a multiplier. Each instruction set that the library
/// knows fills one of these tables, and all of them store the same bits.
namespace IPP::Detail {

struct Kernels {
    void (*byteToFloat)(std::size_t n, const unsigned char* src, float* dst);
    void (*shortToFloat)(std::size_t n, const short* src, float* dst, float multiplier);
    void (*shortToDouble)(std::size_t n, const short* src, double* dst, double multiplier);
    void (*intToFloat)(std::size_t n, const int* src, float* dst, float multiplier);
    void (*intToDouble)(std::size_t n, const int* src, double* dst, double multiplier);
    void (*floatToDouble)(std::size_t n, const float* src, double* dst);
    void (*doubleToFloat)(std::size_t n, const double* src, float* dst);

    void (*floatToShort)(std::size_t n, const float* src, short* dst, float multiplier);
    void (*floatToShortRounded)(std::size_t n, const float* src, short* dst, float multiplier);
    void (*floatToInt)(std::size_t n, const float* src, int* dst, float multiplier);
    void (*floatToIntRounded)(std::size_t n, const float* src, int* dst, float multiplier);
    /// These hold the input to -1.0 .. 1.0 first.
    void (*clampedFloatToInt)(std::size_t n, const float* src, int* dst, float multiplier);
    void (*clampedFloatToIntRounded)(std::size_t n, const float* src, int* dst, float multiplier);

    /// Fills `size` bytes with the eight bytes of `pattern`, in memory order, over and over; `size` is a multiple of 2.
    void (*fill)(std::size_t size, void* dst, std::uint64_t pattern);
    bool (*equal)(std::size_t size, const unsigned char* a, const unsigned char* b);
};

extern const Kernels PLAIN_KERNELS;

/// On processors of the x86 family only.
extern const Kernels SSE2_KERNELS;
extern const Kernels AVX2_KERNELS;
extern const Kernels AVX512_KERNELS;

}  // namespace IPP::Detail
