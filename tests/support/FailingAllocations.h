#pragma once

#include <new>

namespace test {

/// How many blocks from operator new are in use; the same before and after when nothing leaks.
long blocksInUse();

/// Lets `count` more allocations pass and the one after them fail; a negative count ends that.
void failAfter(long count);

/// Memory exhaustion on demand, for programs that link test_failing_allocations, which replaces operator new.
///
/// Calls `operation` with its first allocation failing, then its second, and so on, until it passes without a failure;
/// after each std::bad_alloc that leaves it, calls `check`. One thread at a time.
template <typename Operation, typename Check>
void exhaustMemory(Operation operation, Check check) {
    for (long count = 0;; ++count) {
        failAfter(count);
        try {
            operation();
            failAfter(-1);
            return;
        } catch (const std::bad_alloc&) {
            failAfter(-1);
            check();
        }
    }
}

}  // namespace test
