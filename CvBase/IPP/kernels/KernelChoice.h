#pragma once

#include "CvBase/IPP/kernels/Kernels.h"

/// Which instructions the routines of IPP use. The library's users need not look here: the best that the processor has
/// is chosen at the first call. Tests and benchmarks choose others.
namespace IPP::Detail {

enum class Path { Plain, Sse2, Avx2, Avx512 };

/// Every path, from the plainest to the widest.
constexpr Path PATHS[] = {Path::Plain, Path::Sse2, Path::Avx2, Path::Avx512};

/// "plain", "SSE2", "AVX2" or "AVX-512".
const char* nameOf(Path path);

/// Whether this build has the path and this processor can run it.
bool isSupported(Path path);

/// The widest path that is supported.
Path bestPath();

/// Makes all later calls of IPP, on all threads, take `path`, which must be supported.
void usePath(Path path);

/// The table of the path in use.
const Kernels& activeKernels();

}  // namespace IPP::Detail
