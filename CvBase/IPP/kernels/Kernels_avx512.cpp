// The vector loops with AVX-512 (F and BW). Only this file is compiled for it, and only processors that have it come
// here.

#include <immintrin.h>

#include "CvBase/IPP/kernels/VectorLoops.h"

namespace IPP::Detail {
namespace {

struct Avx512 {
    using Floats = __m512;
    using Doubles = __m512d;
    using Ints = __m512i;
    static constexpr std::size_t WIDTH = 64;
    static constexpr std::size_t LANES = 16;

    static Floats loadFloats(const float* src) { return _mm512_loadu_ps(src); }
    static Ints loadInts(const void* src) { return _mm512_loadu_si512(src); }
    static Ints widenBytes(const unsigned char* src) { return _mm512_cvtepu8_epi32(load16Bytes(src)); }
    static Ints widenShorts(const short* src) { return _mm512_cvtepi16_epi32(load32Bytes(src)); }
    static Doubles widenShortsToDoubles(const short* src) {
        return _mm512_cvtepi32_pd(_mm256_cvtepi16_epi32(load16Bytes(src)));
    }
    static Doubles widenIntsToDoubles(const int* src) { return _mm512_cvtepi32_pd(load32Bytes(src)); }
    static Doubles widenFloats(const float* src) { return _mm512_cvtps_pd(_mm256_loadu_ps(src)); }
    static __m256 narrowDoubles(const double* src) { return _mm512_cvtpd_ps(_mm512_loadu_pd(src)); }

    static Floats broadcast(float x) { return _mm512_set1_ps(x); }
    static Doubles broadcast(double x) { return _mm512_set1_pd(x); }
    static Ints broadcast(std::uint64_t x) { return _mm512_set1_epi64(static_cast<long long>(x)); }
    static Floats multiply(Floats a, Floats b) { return _mm512_mul_ps(a, b); }
    static Doubles multiply(Doubles a, Doubles b) { return _mm512_mul_pd(a, b); }
    static Floats multiplyAdd(Floats x, Floats multiplier, Floats y) { return _mm512_fmadd_ps(x, multiplier, y); }
    static Floats halfLike(Floats x) {
        constexpr int BITS_OF_X_WHERE_MASKED = 0xCA;
        return _mm512_castsi512_ps(_mm512_ternarylogic_epi32(_mm512_set1_epi32(INT32_MIN), _mm512_castps_si512(x),
                                                             _mm512_castps_si512(broadcast(0.5F)),
                                                             BITS_OF_X_WHERE_MASKED));
    }
    /// With x as the second operand a NaN stays.
    static Floats clamp(Floats x) { return _mm512_min_ps(broadcast(1.0F), _mm512_max_ps(broadcast(-1.0F), x)); }
    static Floats toFloats(Ints x) { return _mm512_cvtepi32_ps(x); }
    static Ints truncate(Floats x) { return _mm512_cvttps_epi32(x); }
    /// The instruction packs each 16-byte quarter by itself; the permutation puts their halves into order.
    static Ints packShorts(Ints low, Ints high) {
        return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), _mm512_packs_epi32(low, high));
    }

    static void store(void* dst, Ints x) { _mm512_storeu_si512(dst, x); }
    static void store(void* dst, Floats x) { store(dst, _mm512_castps_si512(x)); }
    static void store(void* dst, Doubles x) { store(dst, _mm512_castpd_si512(x)); }
    static void store(void* dst, __m256 x) { _mm256_storeu_ps(static_cast<float*>(dst), x); }
    static void stream(void* dst, Ints x) { _mm512_stream_si512(static_cast<Ints*>(dst), x); }
    static void stream(void* dst, Floats x) { stream(dst, _mm512_castps_si512(x)); }
    static void stream(void* dst, Doubles x) { stream(dst, _mm512_castpd_si512(x)); }
    static void stream(void* dst, __m256 x) { _mm256_stream_ps(static_cast<float*>(dst), x); }
    static void fence() { _mm_sfence(); }

    static bool sameBytes(const unsigned char* a, const unsigned char* b) { return allZero(difference(a, b)); }
    static bool sameBytes4(const unsigned char* a, const unsigned char* b) {
        const Ints low = _mm512_or_si512(difference(a, b), difference(a + WIDTH, b + WIDTH));
        const Ints high =
            _mm512_or_si512(difference(a + 2 * WIDTH, b + 2 * WIDTH), difference(a + 3 * WIDTH, b + 3 * WIDTH));
        return allZero(_mm512_or_si512(low, high));
    }

private:
    static __m128i load16Bytes(const void* src) { return _mm_loadu_si128(static_cast<const __m128i*>(src)); }
    static __m256i load32Bytes(const void* src) { return _mm256_loadu_si256(static_cast<const __m256i*>(src)); }
    static Ints difference(const unsigned char* a, const unsigned char* b) {
        return _mm512_xor_si512(loadInts(a), loadInts(b));
    }
    static bool allZero(Ints x) { return _mm512_test_epi32_mask(x, x) == 0; }
};

}  // namespace

const Kernels AVX512_KERNELS = makeKernels<Avx512>();

}  // namespace IPP::Detail
