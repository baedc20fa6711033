// The vector loops with AVX2 and FMA. Only this file is compiled for them, and only processors that have both come
// here.

#include <immintrin.h>

#include "CvBase/IPP/kernels/VectorLoops.h"

namespace IPP::Detail {
namespace {

struct Avx2 {
    using Floats = __m256;
    using Doubles = __m256d;
    using Ints = __m256i;
    static constexpr std::size_t WIDTH = 32;
    static constexpr std::size_t LANES = 8;

    static Floats loadFloats(const float* src) { return _mm256_loadu_ps(src); }
    static Ints loadInts(const void* src) { return _mm256_loadu_si256(static_cast<const Ints*>(src)); }
    static Ints widenBytes(const unsigned char* src) { return _mm256_cvtepu8_epi32(load8Bytes(src)); }
    static Ints widenShorts(const short* src) { return _mm256_cvtepi16_epi32(load16Bytes(src)); }
    static Doubles widenShortsToDoubles(const short* src) {
        return _mm256_cvtepi32_pd(_mm_cvtepi16_epi32(load8Bytes(src)));
    }
    static Doubles widenIntsToDoubles(const int* src) { return _mm256_cvtepi32_pd(load16Bytes(src)); }
    static Doubles widenFloats(const float* src) { return _mm256_cvtps_pd(_mm_loadu_ps(src)); }
    static __m128 narrowDoubles(const double* src) { return _mm256_cvtpd_ps(_mm256_loadu_pd(src)); }

    static Floats broadcast(float x) { return _mm256_set1_ps(x); }
    static Doubles broadcast(double x) { return _mm256_set1_pd(x); }
    static Ints broadcast(std::uint64_t x) { return _mm256_set1_epi64x(static_cast<long long>(x)); }
    static Floats multiply(Floats a, Floats b) { return _mm256_mul_ps(a, b); }
    static Doubles multiply(Doubles a, Doubles b) { return _mm256_mul_pd(a, b); }
    static Floats multiplyAdd(Floats x, Floats multiplier, Floats y) { return _mm256_fmadd_ps(x, multiplier, y); }
    static Floats halfLike(Floats x) { return _mm256_or_ps(_mm256_and_ps(x, broadcast(-0.0F)), broadcast(0.5F)); }
    /// With x as the second operand a NaN stays.
    static Floats clamp(Floats x) { return _mm256_min_ps(broadcast(1.0F), _mm256_max_ps(broadcast(-1.0F), x)); }
    static Floats toFloats(Ints x) { return _mm256_cvtepi32_ps(x); }
    static Ints truncate(Floats x) { return _mm256_cvttps_epi32(x); }
    /// The instruction packs each 16-byte half by itself; the permutation puts their quarters into order.
    static Ints packShorts(Ints low, Ints high) {
        return _mm256_permute4x64_epi64(_mm256_packs_epi32(low, high), _MM_SHUFFLE(3, 1, 2, 0));
    }

    static void store(void* dst, Ints x) { _mm256_storeu_si256(static_cast<Ints*>(dst), x); }
    static void store(void* dst, Floats x) { store(dst, _mm256_castps_si256(x)); }
    static void store(void* dst, Doubles x) { store(dst, _mm256_castpd_si256(x)); }
    static void store(void* dst, __m128 x) { _mm_storeu_ps(static_cast<float*>(dst), x); }
    static void stream(void* dst, Ints x) { _mm256_stream_si256(static_cast<Ints*>(dst), x); }
    static void stream(void* dst, Floats x) { stream(dst, _mm256_castps_si256(x)); }
    static void stream(void* dst, Doubles x) { stream(dst, _mm256_castpd_si256(x)); }
    static void stream(void* dst, __m128 x) { _mm_stream_ps(static_cast<float*>(dst), x); }
    static void fence() { _mm_sfence(); }

    static bool sameBytes(const unsigned char* a, const unsigned char* b) { return allZero(difference(a, b)); }
    static bool sameBytes4(const unsigned char* a, const unsigned char* b) {
        const Ints low = _mm256_or_si256(difference(a, b), difference(a + WIDTH, b + WIDTH));
        const Ints high =
            _mm256_or_si256(difference(a + 2 * WIDTH, b + 2 * WIDTH), difference(a + 3 * WIDTH, b + 3 * WIDTH));
        return allZero(_mm256_or_si256(low, high));
    }

private:
    static __m128i load8Bytes(const void* src) { return _mm_loadl_epi64(static_cast<const __m128i*>(src)); }
    static __m128i load16Bytes(const void* src) { return _mm_loadu_si128(static_cast<const __m128i*>(src)); }
    static Ints difference(const unsigned char* a, const unsigned char* b) {
        return _mm256_xor_si256(loadInts(a), loadInts(b));
    }
    static bool allZero(Ints x) { return _mm256_testz_si256(x, x) != 0; }
};

/// Permuting packed shorts into order takes longer, beside the instructions that round, than sharing the elements out
/// when they are loaded: 0-3 and 8-11 to one vector, 4-7 and 12-15 to the other, whose halves are then packed in order.
/// And choosing one of two halves is one instruction in place of two.
template <>
struct Block<Avx2, FloatToShort<true>> {
    explicit Block(FloatToShort<true> operation) : multiplier(Avx2::broadcast(operation.multiplier)) {}
    __m256i operator()(const float* src) const {
        constexpr int UPPER_HALF_OF_SECOND = 0xF0;
        const __m256 middle = Avx2::loadFloats(src + 4);
        const __m256 first = _mm256_blend_ps(Avx2::loadFloats(src), middle, UPPER_HALF_OF_SECOND);
        const __m256 second = _mm256_blend_ps(middle, Avx2::loadFloats(src + 8), UPPER_HALF_OF_SECOND);
        return _mm256_packs_epi32(rounded(first), rounded(second));
    }
    __m256i rounded(__m256 x) const {
        const __m256 half = _mm256_blendv_ps(Avx2::broadcast(0.5F), Avx2::broadcast(-0.5F), x);
        return Avx2::truncate(Avx2::multiplyAdd(x, multiplier, half));
    }
    __m256 multiplier;
};

}  // namespace

const Kernels AVX2_KERNELS = makeKernels<Avx2>();

}  // namespace IPP::Detail
