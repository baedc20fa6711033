#include "tests/support/FailingAllocations.h"

#include <cstdlib>

// In a file of its own: where the compiler sees both these operators and a use of them, it takes malloc and delete for
// a mismatch.

namespace {

thread_local long allocationsLeft = -1;  // until the one that fails; negative: none does
thread_local long blocks = 0;

void* allocate(std::size_t size) {
    if (allocationsLeft == 0) {
        throw std::bad_alloc();
    }
    allocationsLeft -= allocationsLeft > 0 ? 1 : 0;
    void* const block = std::malloc(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++blocks;
    return block;
}

void release(void* block) {
    blocks -= block != nullptr ? 1 : 0;
    std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}

void* operator new[](std::size_t size) {
    return allocate(size);
}

void operator delete(void* block) noexcept {
    release(block);
}

void operator delete[](void* block) noexcept {
    release(block);
}

void operator delete(void* block, std::size_t) noexcept {
    release(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    release(block);
}

namespace test {

long blocksInUse() {
    return blocks;
}

void failAfter(long count) {
    allocationsLeft = count;
}

}  // namespace test
