#pragma once

#include "CvBase/IPP/kernels/Kernels.h"

/// Which instructions the routines of IPP use. The library's users need not look here: the best that the processor has
/// is chosen at the first call. Tests and benchmarks choose others.
namespace IPP::Detail {

enum class Path { PLAIN, SSE2, AVX2, AVX512 };

/// Every path, from the plainest to the widest.
constexpr Path PATHS[] = {Path::PLAIN, Path::SSE2, Path::AVX2, Path::AVX512};

/// "plain", "SSE2", "AVX2" or "AVX-512".
const char* NameOf(Path path);

/// Whether this build has the path and this processor can run it.
bool IsSupported(Path path);

/// The widest path that is supported.
Path BestPath();

/// Makes all later calls of IPP, on all threads, take `path`, which must be supported.
void UsePath(Path path);

/// The table of the path in use.
const Kernels& ActiveKernels();

}  // namespace IPP::Detail
