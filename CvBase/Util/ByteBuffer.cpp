#include "CvBase/Util/ByteBuffer.h"

#include <cstdlib>
#include <new>

namespace Util::Detail {

void ByteBuffer::reserve(std::size_t wanted) {
    if (wanted <= capacity()) {
        return;
    }
    const std::size_t size = this->size();
    const bool wasLarge = capacity() >= LARGE;
    void* const block = wasLarge          ? std::realloc(begin_, wanted)
                        : wanted >= LARGE ? std::malloc(wanted)
                                          : ::operator new(wanted);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    if (!wasLarge) {
        IPP::Copy(static_cast<unsigned int>(size), begin_, static_cast<unsigned char*>(block));
        release();
    }
    begin_ = static_cast<unsigned char*>(block);
    end_ = begin_ + size;
    limit_ = begin_ + wanted;
}

void ByteBuffer::append(std::size_t count, const unsigned char* bytes) {
    if (capacity() >= LARGE && touched_ < size() + count) {
        touch(count);
    }
    IPP::Copy(static_cast<unsigned int>(count), bytes, extend(count));
}

void ByteBuffer::touch(std::size_t count) {
    // The system provides a page when it is first written to. Some pages at a stretch take it a twentieth less time
    // than one in the midst of each copy.
    constexpr std::size_t PAGE = 4096;
    constexpr std::size_t AHEAD = 16 * PAGE;
    const std::size_t first = std::max(touched_, size());
    touched_ = std::min(size() + count + AHEAD, capacity());
    for (std::size_t i = first; i < touched_; i += PAGE) {
        static_cast<volatile unsigned char&>(begin_[i]) = 0;
    }
}

void ByteBuffer::release() {
    if (capacity() >= LARGE) {
        std::free(begin_);
    } else {
        ::operator delete(begin_);
    }
}

}  // namespace Util::Detail
