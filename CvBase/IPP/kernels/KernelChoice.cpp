#include "CvBase/IPP/kernels/KernelChoice.h"

#include <atomic>

namespace IPP::Detail {

namespace {

/// The table of a path, or null where the build lacks it or the processor cannot run it.
const Kernels* supportedKernels(Path path) {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_cpu_init();
    switch (path) {
        case Path::PLAIN:
            return &PLAIN_KERNELS;
        case Path::SSE2:
            return __builtin_cpu_supports("sse2") ? &SSE2_KERNELS : nullptr;
        case Path::AVX2:
            return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") ? &AVX2_KERNELS : nullptr;
        case Path::AVX512:
            return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") ? &AVX512_KERNELS : nullptr;
    }
    return nullptr;
#else
    return path == Path::PLAIN ? &PLAIN_KERNELS : nullptr;
#endif
}

/// Null until the first call chooses. Two threads that choose at once choose the same.
std::atomic<const Kernels*> activeKernels{nullptr};

}  // namespace

const char* NameOf(Path path) {
    switch (path) {
        case Path::PLAIN:
            return "plain";
        case Path::SSE2:
            return "SSE2";
        case Path::AVX2:
            return "AVX2";
        case Path::AVX512:
            return "AVX-512";
    }
    return "unknown";
}

bool IsSupported(Path path) {
    return supportedKernels(path) != nullptr;
}

Path BestPath() {
    Path best = Path::PLAIN;
    for (const Path path : PATHS) {
        if (IsSupported(path)) {
            best = path;
        }
    }
    return best;
}

void UsePath(Path path) {
    activeKernels.store(supportedKernels(path), std::memory_order_release);
}

const Kernels& ActiveKernels() {
    const Kernels* kernels = activeKernels.load(std::memory_order_acquire);
    if (kernels == nullptr) {
        UsePath(BestPath());
        kernels = activeKernels.load(std::memory_order_acquire);
    }
    return *kernels;
}

}  // namespace IPP::Detail
