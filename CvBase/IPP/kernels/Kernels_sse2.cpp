// The vector loops with SSE2, which every processor of the x86 family that this library runs on has.

#include <emmintrin.h>

#include "CvBase/IPP/kernels/VectorLoops.h"

namespace IPP::Detail {
namespace {

struct Sse2 {
    using Floats = __m128;
    using Doubles = __m128d;
    using Ints = __m128i;
    static constexpr std::size_t WIDTH = 16;
    static constexpr std::size_t LANES = 4;

    static Floats loadFloats(const float* src) { return _mm_loadu_ps(src); }
    static Ints loadInts(const void* src) { return _mm_loadu_si128(static_cast<const Ints*>(src)); }
    static Ints widenBytes(const unsigned char* src) {
        const Ints zero = _mm_setzero_si128();
        return _mm_unpacklo_epi16(_mm_unpacklo_epi8(load4Bytes(src), zero), zero);
    }
    static Ints widenShorts(const short* src) { return signExtend(load8Bytes(src)); }
    static Doubles widenShortsToDoubles(const short* src) { return _mm_cvtepi32_pd(signExtend(load4Bytes(src))); }
    static Doubles widenIntsToDoubles(const int* src) { return _mm_cvtepi32_pd(load8Bytes(src)); }
    static Doubles widenFloats(const float* src) { return _mm_cvtps_pd(_mm_castsi128_ps(load8Bytes(src))); }
    static Floats narrowDoubles(const double* src) {
        return _mm_movelh_ps(_mm_cvtpd_ps(_mm_loadu_pd(src)), _mm_cvtpd_ps(_mm_loadu_pd(src + 2)));
    }

    static Floats broadcast(float x) { return _mm_set1_ps(x); }
    static Doubles broadcast(double x) { return _mm_set1_pd(x); }
    static Ints broadcast(std::uint64_t x) { return _mm_set1_epi64x(static_cast<long long>(x)); }
    static Floats multiply(Floats a, Floats b) { return _mm_mul_ps(a, b); }
    static Doubles multiply(Doubles a, Doubles b) { return _mm_mul_pd(a, b); }
    static Floats multiplyAdd(Floats x, Floats multiplier, Floats y) {
        return _mm_add_ps(_mm_mul_ps(x, multiplier), y);
    }
    static Floats halfLike(Floats x) { return _mm_or_ps(_mm_and_ps(x, broadcast(-0.0F)), broadcast(0.5F)); }
    /// With x as the second operand a NaN stays.
    static Floats clamp(Floats x) { return _mm_min_ps(broadcast(1.0F), _mm_max_ps(broadcast(-1.0F), x)); }
    static Floats toFloats(Ints x) { return _mm_cvtepi32_ps(x); }
    static Ints truncate(Floats x) { return _mm_cvttps_epi32(x); }
    static Ints packShorts(Ints low, Ints high) { return _mm_packs_epi32(low, high); }

    static void store(void* dst, Ints x) { _mm_storeu_si128(static_cast<Ints*>(dst), x); }
    static void store(void* dst, Floats x) { store(dst, _mm_castps_si128(x)); }
    static void store(void* dst, Doubles x) { store(dst, _mm_castpd_si128(x)); }
    static void stream(void* dst, Ints x) { _mm_stream_si128(static_cast<Ints*>(dst), x); }
    static void stream(void* dst, Floats x) { stream(dst, _mm_castps_si128(x)); }
    static void stream(void* dst, Doubles x) { stream(dst, _mm_castpd_si128(x)); }
    static void fence() { _mm_sfence(); }

    static bool sameBytes(const unsigned char* a, const unsigned char* b) { return allSet(compare(a, b)); }
    static bool sameBytes4(const unsigned char* a, const unsigned char* b) {
        const Ints low = _mm_and_si128(compare(a, b), compare(a + WIDTH, b + WIDTH));
        const Ints high = _mm_and_si128(compare(a + 2 * WIDTH, b + 2 * WIDTH), compare(a + 3 * WIDTH, b + 3 * WIDTH));
        return allSet(_mm_and_si128(low, high));
    }

private:
    static Ints load4Bytes(const void* src) {
        int bytes;
        std::memcpy(&bytes, src, sizeof bytes);
        return _mm_cvtsi32_si128(bytes);
    }
    static Ints load8Bytes(const void* src) { return _mm_loadl_epi64(static_cast<const Ints*>(src)); }
    static Ints signExtend(Ints shorts) { return _mm_srai_epi32(_mm_unpacklo_epi16(shorts, shorts), 16); }
    static Ints compare(const unsigned char* a, const unsigned char* b) {
        return _mm_cmpeq_epi8(loadInts(a), loadInts(b));
    }
    static bool allSet(Ints x) { return _mm_movemask_epi8(x) == 0xFFFF; }
};

}  // namespace

const Kernels SSE2_KERNELS = makeKernels<Sse2>();

}  // namespace IPP::Detail
