#pragma once

#include <cstddef>

/// Copies and reads with the widest vectors that the processor has: what a conversion or a comparison would take if
/// computing cost nothing. A copy's two sizes may differ: all of the source is read, and what is written is made of it.
namespace bench {

/// `readSize` is `writeSize`, or 2, 4 or a half, a quarter of it; both are multiples of 512 bytes, and the memory is
/// aligned to 64 bytes.
void vectorCopy(const void* src, std::size_t readSize, void* dst, std::size_t writeSize);

/// The same with stores that go past the caches.
void streamingCopy(const void* src, std::size_t readSize, void* dst, std::size_t writeSize);

/// Reads two areas of `size` bytes, a multiple of 512; gives a number made of all that was read.
unsigned int vectorRead(const void* a, const void* b, std::size_t size);

}  // namespace bench
