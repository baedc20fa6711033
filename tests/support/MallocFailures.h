#pragma once

#include <new>

#include "tests/support/Test.h"

namespace test {

/// Memory exhaustion on demand, also in C libraries: malloc, calloc and realloc, which operator new stands on, fail
/// when they are told to. Nothing here asks for memory with an alignment of its own.
///
/// They are in the shared library test_malloc_failures; a program that links it gets them for all its libraries. Not
/// for builds with a sanitizer, which brings a malloc of its own.
///
/// Only the allocations of the calling thread count and fail.
extern "C" {

/// Lets the next `passes` allocations pass, the `failures` ones after them fail, and all others pass; the count of
/// allocations begins anew.
__attribute__((visibility("default"))) void failMalloc(unsigned long passes, unsigned long failures);

/// Ends that. Returns how many allocations were tried since.
__attribute__((visibility("default"))) unsigned long endMallocFailures();
}

/// What an operation may end with, as the exit status of a process.
enum Ending { Completed, OutOfMemory, Wrong, Leaked, DoneWithoutFailure };

/// Does the operation in a copy of this process with these allocations failing; it answers whether its result is right,
/// and may end the failures before it looks. Returns an Ending, or another number when the copy came to a bad end.
inline int attempt(unsigned long passes, unsigned long failures, const std::function<bool()>& operation) {
    return endOfCopy([&]() -> int {
        const std::size_t descriptors = openDescriptors();
        int ending = Wrong;
        failMalloc(passes, failures);
        try {
            ending = operation() ? Completed : Wrong;
        } catch (const std::bad_alloc&) {
            ending = OutOfMemory;
        }
        const bool isReached = endMallocFailures() > passes;
        return openDescriptors() != descriptors    ? Leaked
               : ending == Completed && !isReached ? DoneWithoutFailure
                                                   : ending;
    });
}

/// Attempts the operation with its first allocation failing, then its second, and so on, and then with all from the
/// first on failing, and so on; calls `prepare` before and `check` after each. Returns how many attempts there were.
inline int exhaust(
    const std::function<bool()>& operation, const std::function<void()>& prepare = [] {},
    const std::function<void()>& check = [] {}) {
    int attempts = 0;
    for (const unsigned long failures : {1UL, std::numeric_limits<unsigned long>::max()}) {
        int ending = Completed;
        for (unsigned long passes = 0; ending != DoneWithoutFailure; ++passes, ++attempts) {
            prepare();
            ending = attempt(passes, failures, operation);
            EXPECT_THAT(ending, testing::AnyOf(Completed, OutOfMemory, DoneWithoutFailure))
                << passes << " passed, then " << failures << " failed";
            check();
            if (testing::Test::HasFailure()) {
                return attempts;
            }
        }
    }
    std::printf("%d allocations failed\n", attempts);
    return attempts;
}

}  // namespace test
