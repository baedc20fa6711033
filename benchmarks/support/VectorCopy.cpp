#include "benchmarks/support/VectorCopy.h"

#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

namespace bench {
namespace {

// One step reads READS vectors and writes WRITES; where it reads more, it writes what they amount to together.
#if defined(__x86_64__) || defined(__i386__)

#define CV_BENCH_COPY(NAME, TARGET, VECTOR, LOAD, MERGE, STORE)                                    \
    template <std::size_t READS, std::size_t WRITES>                                               \
    __attribute__((target(TARGET))) void NAME(const char* src, char* dst, std::size_t writeSize) { \
        for (std::size_t done = 0; done < writeSize; done += WRITES * sizeof(VECTOR)) {            \
            VECTOR x[READS];                                                                       \
            _Pragma("GCC unroll 4") for (std::size_t i = 0; i < READS; ++i) {                      \
                x[i] = LOAD(reinterpret_cast<const VECTOR*>(src) + i);                             \
            }                                                                                      \
            src += READS * sizeof(VECTOR);                                                         \
            _Pragma("GCC unroll 4") for (std::size_t i = WRITES; i < READS; ++i) {                 \
                x[i % WRITES] = MERGE(x[i % WRITES], x[i]);                                        \
            }                                                                                      \
            _Pragma("GCC unroll 4") for (std::size_t i = 0; i < WRITES; ++i) {                     \
                STORE(reinterpret_cast<VECTOR*>(dst + done) + i, x[i % READS]);                    \
            }                                                                                      \
        }                                                                                          \
        _mm_sfence();                                                                              \
    }

CV_BENCH_COPY(copySse2, "sse2", __m128i, _mm_load_si128, _mm_xor_si128, _mm_store_si128)
CV_BENCH_COPY(streamSse2, "sse2", __m128i, _mm_load_si128, _mm_xor_si128, _mm_stream_si128)
CV_BENCH_COPY(copyAvx2, "avx2", __m256i, _mm256_load_si256, _mm256_xor_si256, _mm256_store_si256)
CV_BENCH_COPY(streamAvx2, "avx2", __m256i, _mm256_load_si256, _mm256_xor_si256, _mm256_stream_si256)
CV_BENCH_COPY(copyAvx512, "avx512f", __m512i, _mm512_load_si512, _mm512_xor_si512, _mm512_store_si512)
CV_BENCH_COPY(streamAvx512, "avx512f", __m512i, _mm512_load_si512, _mm512_xor_si512, _mm512_stream_si512)

#undef CV_BENCH_COPY

// The sums of what was read are in four registers, so that no addition waits for the one before it.
#define CV_BENCH_READ(NAME, TARGET, VECTOR, LOAD, MERGE, FIRST)                                           \
    __attribute__((target(TARGET))) unsigned int NAME(const char* a, const char* b, std::size_t size) {   \
        VECTOR sums[4] = {};                                                                              \
        for (std::size_t done = 0; done < size; done += 2 * sizeof(VECTOR)) {                             \
            _Pragma("GCC unroll 2") for (std::size_t i = 0; i < 2; ++i) {                                 \
                sums[i] = MERGE(sums[i], LOAD(reinterpret_cast<const VECTOR*>(a + done) + i));            \
                sums[i + 2] = MERGE(sums[i + 2], LOAD(reinterpret_cast<const VECTOR*>(b + done) + i));    \
            }                                                                                             \
        }                                                                                                 \
        return static_cast<unsigned int>(FIRST(MERGE(MERGE(sums[0], sums[1]), MERGE(sums[2], sums[3])))); \
    }

CV_BENCH_READ(readSse2, "sse2", __m128i, _mm_load_si128, _mm_xor_si128, _mm_cvtsi128_si32)
CV_BENCH_READ(readAvx2, "avx2", __m256i, _mm256_load_si256, _mm256_xor_si256, _mm256_cvtsi256_si32)
CV_BENCH_READ(readAvx512, "avx512f", __m512i, _mm512_load_si512, _mm512_xor_si512, _mm512_cvtsi512_si32)

#undef CV_BENCH_READ

unsigned int read(const char* a, const char* b, std::size_t size) {
    if (__builtin_cpu_supports("avx512f")) {
        return readAvx512(a, b, size);
    }
    return __builtin_cpu_supports("avx2") ? readAvx2(a, b, size) : readSse2(a, b, size);
}

template <std::size_t READS, std::size_t WRITES>
void copy(const char* src, char* dst, std::size_t writeSize) {
    if (__builtin_cpu_supports("avx512f")) {
        copyAvx512<READS, WRITES>(src, dst, writeSize);
    } else if (__builtin_cpu_supports("avx2")) {
        copyAvx2<READS, WRITES>(src, dst, writeSize);
    } else {
        copySse2<READS, WRITES>(src, dst, writeSize);
    }
}

template <std::size_t READS, std::size_t WRITES>
void stream(const char* src, char* dst, std::size_t writeSize) {
    if (__builtin_cpu_supports("avx512f")) {
        streamAvx512<READS, WRITES>(src, dst, writeSize);
    } else if (__builtin_cpu_supports("avx2")) {
        streamAvx2<READS, WRITES>(src, dst, writeSize);
    } else {
        streamSse2<READS, WRITES>(src, dst, writeSize);
    }
}

#else

template <std::size_t READS, std::size_t WRITES>
void copy(const char* src, char* dst, std::size_t writeSize) {
    for (std::size_t done = 0; done < writeSize; done += 64 * WRITES) {
        char merged[64 * (READS > WRITES ? READS : WRITES)];
        std::memcpy(merged, src, 64 * READS);
        src += 64 * READS;
        for (std::size_t i = 64 * WRITES; i < 64 * READS; ++i) {
            merged[i % (64 * WRITES)] = static_cast<char>(merged[i % (64 * WRITES)] ^ merged[i]);
        }
        for (std::size_t i = 64 * READS; i < 64 * WRITES; ++i) {
            merged[i] = merged[i % (64 * READS)];
        }
        std::memcpy(dst + done, merged, 64 * WRITES);
    }
}

template <std::size_t READS, std::size_t WRITES>
void stream(const char* src, char* dst, std::size_t writeSize) {
    copy<READS, WRITES>(src, dst, writeSize);
}

unsigned int read(const char* a, const char* b, std::size_t size) {
    unsigned int sum = 0;
    for (std::size_t i = 0; i < size; ++i) {
        sum += static_cast<unsigned int>(a[i] ^ b[i]);
    }
    return sum;
}

#endif

}  // namespace

void vectorCopy(const void* src, std::size_t readSize, void* dst, std::size_t writeSize) {
    const auto* const from = static_cast<const char*>(src);
    auto* const to = static_cast<char*>(dst);
    if (readSize == writeSize) {
        copy<4, 4>(from, to, writeSize);
    } else if (readSize == 2 * writeSize) {
        copy<4, 2>(from, to, writeSize);
    } else if (writeSize == 2 * readSize) {
        copy<2, 4>(from, to, writeSize);
    } else {
        copy<1, 4>(from, to, writeSize);
    }
}

void streamingCopy(const void* src, std::size_t readSize, void* dst, std::size_t writeSize) {
    const auto* const from = static_cast<const char*>(src);
    auto* const to = static_cast<char*>(dst);
    if (readSize == writeSize) {
        stream<4, 4>(from, to, writeSize);
    } else if (readSize == 2 * writeSize) {
        stream<4, 2>(from, to, writeSize);
    } else if (writeSize == 2 * readSize) {
        stream<2, 4>(from, to, writeSize);
    } else {
        stream<1, 4>(from, to, writeSize);
    }
}

unsigned int vectorRead(const void* a, const void* b, std::size_t size) {
    return read(static_cast<const char*>(a), static_cast<const char*>(b), size);
}

}  // namespace bench
