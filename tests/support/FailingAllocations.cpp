#include "tests/support/FailingAllocations.h"

#include <cstdlib>

// In a file of its own: where the compiler sees both these operators and a use of them, it takes malloc and delete for
// a mismatch.

namespace {

thread_local long g_allocationsLeft = -1;  // until the one that fails; negative: none does
thread_local long g_blocks = 0;

}  // namespace

// The forms for arrays come to these.

void* operator new(std::size_t size) {
    void* const block = g_allocationsLeft == 0 ? nullptr : std::malloc(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    g_allocationsLeft -= g_allocationsLeft > 0 ? 1 : 0;
    ++g_blocks;
    return block;
}

void operator delete(void* block) noexcept {
    g_blocks -= block != nullptr ? 1 : 0;
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}

namespace test {

long blocksInUse() {
    return g_blocks;
}

void failAfter(long count) {
    g_allocationsLeft = count;
}

}  // namespace test
