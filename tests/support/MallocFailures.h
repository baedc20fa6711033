#pragma once

namespace test {

/// Memory exhaustion on demand, also in C libraries: malloc and its kin (calloc, realloc, aligned_alloc, memalign,
/// posix_memalign), which operator new stands on, fail when they are told to.
///
/// They are in the shared library test_malloc_failures. A program that links it, or that is started with
/// LD_PRELOAD=libtest_malloc_failures.so, gets them for all its libraries; one that only may have been started so asks
/// dlsym(RTLD_DEFAULT, "failMalloc"). Not for builds with a sanitizer, which brings a malloc of its own.
///
/// Only the allocations of the calling thread count and fail.
extern "C" {

/// Lets the next `passes` allocations pass, the `failures` ones after them fail, and all others pass; the count of
/// allocations begins anew.
__attribute__((visibility("default"))) void failMalloc(unsigned long passes, unsigned long failures);

/// Ends that. Returns how many allocations were tried since.
__attribute__((visibility("default"))) unsigned long endMallocFailures();
}

}  // namespace test
