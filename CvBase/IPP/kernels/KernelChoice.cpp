#include "CvBase/IPP/kernels/KernelChoice.h"

#include <atomic>

namespace IPP::Detail {

namespace {

/// The table of a path, or null where the build lacks it or the processor cannot run it.
const Kernels* supportedKernels(Path path) {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_cpu_init();
    switch (path) {
        case Path::Plain:
            return &PLAIN_KERNELS;
        case Path::Sse2:
            return __builtin_cpu_supports("sse2") ? &SSE2_KERNELS : nullptr;
        case Path::Avx2:
            return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") ? &AVX2_KERNELS : nullptr;
        case Path::Avx512:
            return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") ? &AVX512_KERNELS : nullptr;
    }
    return nullptr;
#else
    return path == Path::Plain ? &PLAIN_KERNELS : nullptr;
#endif
}

/// Null until the first call chooses. Two threads that choose at once choose the same.
std::atomic<const Kernels*> g_activeKernels{nullptr};

}  // namespace

const char* nameOf(Path path) {
    switch (path) {
        case Path::Plain:
            return "plain";
        case Path::Sse2:
            return "SSE2";
        case Path::Avx2:
            return "AVX2";
        case Path::Avx512:
            return "AVX-512";
    }
    return "unknown";
}

bool isSupported(Path path) {
    return supportedKernels(path) != nullptr;
}

Path bestPath() {
    Path best = Path::Plain;
    for (const Path path : PATHS) {
        if (isSupported(path)) {
            best = path;
        }
    }
    return best;
}

void usePath(Path path) {
    g_activeKernels.store(supportedKernels(path), std::memory_order_release);
}

const Kernels& activeKernels() {
    const Kernels* kernels = g_activeKernels.load(std::memory_order_acquire);
    if (kernels == nullptr) {
        usePath(bestPath());
        kernels = g_activeKernels.load(std::memory_order_acquire);
    }
    return *kernels;
}

}  // namespace IPP::Detail
