#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "CvBase/IPP/IPP_util_mac.h"

/// \file
/// The memory of a stream. Only ByteStream.h includes this.

#pragma GCC visibility push(default)

namespace Util::Detail {

/// Bytes in one block of memory, much as in a std::vector. When a large block grows, the system moves its pages rather
/// than its bytes, as realloc() has it: a std::vector would copy every byte once again, into pages that are all new.
class ByteBuffer {
public:
    /// The most bytes there can be: positions in a stream have 32 bits.
    static constexpr std::uint64_t MAX_SIZE =
        std::min<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max(), std::numeric_limits<std::uint32_t>::max());

    ByteBuffer() = default;
    ByteBuffer(const ByteBuffer&) = delete;
    ByteBuffer& operator=(const ByteBuffer&) = delete;
    ~ByteBuffer() { release(); }

    /// The first byte; null before the first reserve(). Valid until reserve() changes the capacity.
    [[nodiscard]] unsigned char* data() { return begin_; }
    [[nodiscard]] const unsigned char* data() const { return begin_; }

    /// How many bytes there are.
    [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(end_ - begin_); }

    /// For how many bytes there is memory, and for how many more than there are.
    [[nodiscard]] std::size_t capacity() const { return static_cast<std::size_t>(limit_ - begin_); }
    [[nodiscard]] std::size_t spare() const { return static_cast<std::size_t>(limit_ - end_); }

    /// Makes memory for `wanted` bytes, at most MAX_SIZE, unless there is as much. Throws std::bad_alloc and changes
    /// nothing then.
    void reserve(std::size_t wanted);

    /// Makes `count` bytes more part of the buffer and returns the first of them; they are whatever they are. There
    /// must be memory for them.
    [[nodiscard]] unsigned char* extend(std::size_t count) {
        unsigned char* const first = end_;
        end_ += count;
        return first;
    }

    /// Appends a copy of `count` bytes, for which there must be memory.
    void append(std::size_t count, const unsigned char* bytes);

    /// Drops the bytes and keeps the memory.
    void clear() { end_ = begin_; }

private:
    /// From this size on a block comes from malloc(), below it from operator new, as all memory of the library.
    static constexpr std::size_t LARGE = std::size_t{1} << 18;

    /// Writes into every page of the memory for the next `count` bytes, and of some more, that nothing has reached yet.
    void touch(std::size_t count);

    void release();

    unsigned char* begin_ = nullptr;
    unsigned char* end_ = nullptr;
    unsigned char* limit_ = nullptr;
    std::size_t touched_ = 0;  // of the bytes from begin_ on, how many have memory behind them
};

}  // namespace Util::Detail

#pragma GCC visibility pop
