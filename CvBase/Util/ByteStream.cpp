#include "CvBase/Util/ByteStream.h"

#include <algorithm>
#include <new>

#include "CvBase/IPP/IPP_util_mac.h"
#include "CvBase/Util/Exception/DataStreamIO.h"

namespace Util {

using Exception::DataStreamIO;

namespace {

/// The longest text that is read; a longer one is taken for damage.
constexpr unsigned int MAX_TEXT_LENGTH = 200000;

/// The lines by which readers of logs know the failures. They, and the texts of the messages, stay as they are when the
/// code changes.
enum FailureLine { TextLengthLine = 74, TextLine = 81, VectorLine = 104, ReadLine = 123, ExtractLine = 141 };

[[noreturn]] void fail(const String& message, std::size_t count, int line) {
    ::Exception::Throw(DataStreamIO(message.Arg(static_cast<unsigned long long>(count))), "Util/ByteStream", line);
}

}  // namespace

ByteStream::ByteStream(unsigned int reserve) {
    makeRoom(reserve);
}

ByteStream::ByteStream(unsigned int size, const unsigned char* data) : ByteStream(size) {
    buffer_.append(size, data);
}

ByteStream::ByteStream(const std::vector<unsigned char>& bytes) {
    makeRoom(bytes.size());
    buffer_.append(bytes.size(), bytes.data());
}

ByteStream::~ByteStream() = default;

void ByteStream::Clear() {
    buffer_.clear();
    position_ = 0;
}

DataStream& ByteStream::operator>>(bool& value) {
    signed char byte = 0;
    extract(byte);
    value = byte != 0;
    return *this;
}

DataStream& ByteStream::operator>>(String& text) {
    // Shared, it takes no memory; never destroyed, it serves streams that outlive it.
    static const String& none = *new String();
    try {
        unsigned int length = 0;
        *this >> length;
        if (length > MAX_TEXT_LENGTH) {
            fail("Improbable string length %1", length, TextLengthLine);
        }
        if (length == 0) {
            text = none;
            return *this;
        }
        if (!has(length)) {
            fail("Can't read string of length %1", length, TextLine);
        }
        text.Assign(reinterpret_cast<const char*>(buffer_.data() + position_), length);
        position_ += length;
    } catch (...) {
        text = none;
        throw;
    }
    return *this;
}

DataStream& ByteStream::operator>>(std::vector<unsigned char>& bytes) {
    take(bytes.size(), bytes.data(), VectorLine);
    return *this;
}

void ByteStream::Read(unsigned int count, unsigned char* dest) {
    take(count, dest, ReadLine);
}

DataStream& ByteStream::operator<<(const String& text) {
    const unsigned int length = text.Length();
    // Room for both is made first, so that no length is left without its text.
    makeRoom((writeStringLength_ ? sizeof length : 0) + std::uint64_t{length});
    if (writeStringLength_) {
        *this << length;
    }
    write(length, reinterpret_cast<const unsigned char*>(text.CStr()));
    return *this;
}

DataStream& ByteStream::operator<<(const std::vector<unsigned char>& bytes) {
    write(bytes.size(), bytes.data());
    return *this;
}

void ByteStream::Write(unsigned int count, const unsigned char* src) {
    write(count, src);
}

void ByteStream::Skip(int count) {
    SetPosition(GetPosition() + static_cast<unsigned int>(count));
}

void ByteStream::take(std::size_t count, unsigned char* dest, int failureLine) {
    if (count == 0) {
        return;
    }
    if (!has(count)) {
        fail("Can't read %1 bytes", count, failureLine);
    }
    IPP::Copy(static_cast<unsigned int>(count), buffer_.data() + position_, dest);
    position_ += static_cast<unsigned int>(count);
}

void ByteStream::makeRoom(std::uint64_t count) {
    if (count == 0) {
        return;
    }
    constexpr std::uint64_t LIMIT = Detail::ByteBuffer::MAX_SIZE;
    if (count > LIMIT || position_ > LIMIT - count) {
        throw std::bad_alloc();
    }
    const std::uint64_t end = position_ + count;
    if (end > buffer_.capacity()) {
        buffer_.reserve(static_cast<std::size_t>(std::max(end, std::min(LIMIT, 2 * std::uint64_t{buffer_.size()}))));
    }
}

void ByteStream::write(std::size_t count, const unsigned char* src) {
    if (count == 0) {
        return;
    }
    makeRoom(count);
    if (position_ > buffer_.size()) {
        const std::size_t gap = position_ - buffer_.size();
        IPP::Zero(static_cast<unsigned int>(gap), buffer_.extend(gap));
    }
    // What lies past the end is appended as it is: zero bytes to write over would cost as much again.
    const std::size_t inside = std::min(count, buffer_.size() - position_);
    IPP::Copy(static_cast<unsigned int>(inside), src, buffer_.data() + position_);
    buffer_.append(count - inside, src + inside);
    position_ += static_cast<unsigned int>(count);
}

void ByteStream::failToExtract(std::size_t width) const {
    const String message = String("Can't extract %1 bytes at position %2, total size %3")
                               .Arg(static_cast<unsigned int>(width))
                               .Arg(position_)
                               .Arg(GetSize());
    ::Exception::Throw(DataStreamIO(message), "Util/ByteStream.h", ExtractLine);
}

}  // namespace Util
