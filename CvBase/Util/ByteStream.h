#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "CvBase/Util/ByteBuffer.h"
#include "CvBase/Util/ByteEncoding.h"
#include "CvBase/Util/DataStream.h"

#pragma GCC visibility push(default)

namespace Util {

/// A stream in memory. DataStream describes the format and what each operation does.
///
///     Util::ByteStream stream(0);
///     stream.SetEndianType(Util::DataStream::BigEndian);
///     stream << 1 << String("ab");  // 00 00 00 01, 00 00 00 02, 61 62
///     stream.SetPosition(0);
///     int number;
///     String text;
///     stream >> number >> text;
///
/// The stream owns its bytes, and its memory doubles when it is full; reserve the size if you know it. It holds at most
/// 2^32 - 1 bytes. A write that would make it longer, or that finds no memory, throws std::bad_alloc and changes
/// nothing; nothing else can fail in a write. One thread at a time.
class ByteStream : public DataStream {
public:
    /// An empty stream with memory for `reserve` bytes.
    explicit ByteStream(unsigned int reserve);

    /// A copy of the `size` bytes at `data`, which may be null when `size` is 0.
    ByteStream(unsigned int size, const unsigned char* data);

    /// A copy of `bytes`.
    explicit ByteStream(const std::vector<unsigned char>& bytes);

    ~ByteStream() override;

    /// Drops all bytes and goes back to position 0. Keeps the allocated memory and the settings.
    void Clear();

    /// @name Settings
    /// @{
    [[nodiscard]] EndianType GetEndianType() const override { return endianType_; }
    void SetEndianType(EndianType endianType) override { endianType_ = endianType; }
    [[nodiscard]] bool IsWriteStringLength() const override { return writeStringLength_; }
    void SetWriteStringLength(bool writeStringLength) override { writeStringLength_ = writeStringLength; }
    /// @}

    /// @name Reading
    /// Each throws Util::Exception::DataStreamIO when the bytes end too soon.
    /// @{

    DataStream& operator>>(bool& value) override;
    DataStream& operator>>(char& value) override { return extract(value); }
    DataStream& operator>>(signed char& value) override { return extract(value); }
    DataStream& operator>>(unsigned char& value) override { return extract(value); }
    DataStream& operator>>(short& value) override { return extract(value); }
    DataStream& operator>>(unsigned short& value) override { return extract(value); }
    DataStream& operator>>(int& value) override { return extract(value); }
    DataStream& operator>>(unsigned int& value) override { return extract(value); }
    DataStream& operator>>(long long& value) override { return extract(value); }
    DataStream& operator>>(unsigned long long& value) override { return extract(value); }
    DataStream& operator>>(long& value) override { return extract(value); }
    DataStream& operator>>(unsigned long& value) override { return extract(value); }
    DataStream& operator>>(float& value) override { return extract(value); }
    DataStream& operator>>(double& value) override { return extract(value); }
    DataStream& operator>>(String& text) override;
    DataStream& operator>>(std::vector<unsigned char>& bytes) override;

    bool ReadPrimitive(bool) override { return read<bool>(); }
    char ReadPrimitive(char) override { return read<char>(); }
    signed char ReadPrimitive(signed char) override { return read<signed char>(); }
    unsigned char ReadPrimitive(unsigned char) override { return read<unsigned char>(); }
    short ReadPrimitive(short) override { return read<short>(); }
    unsigned short ReadPrimitive(unsigned short) override { return read<unsigned short>(); }
    int ReadPrimitive(int) override { return read<int>(); }
    unsigned int ReadPrimitive(unsigned int) override { return read<unsigned int>(); }
    long long ReadPrimitive(long long) override { return read<long long>(); }
    unsigned long long ReadPrimitive(unsigned long long) override { return read<unsigned long long>(); }
    long ReadPrimitive(long) override { return read<long>(); }
    unsigned long ReadPrimitive(unsigned long) override { return read<unsigned long>(); }
    float ReadPrimitive(float) override { return read<float>(); }
    double ReadPrimitive(double) override { return read<double>(); }

    void Read(unsigned int count, unsigned char* dest) override;

    /// What `stream >> value` does for a number or a char of type T, compiled in place. Not for bool.
    template <typename T>
    DataStream& extract(T& value);
    /// @}

    /// @name Writing
    /// Each throws std::bad_alloc and changes nothing when the stream would become too long or memory runs out.
    /// @{
    using DataStream::operator<<;
    DataStream& operator<<(bool value) override { return put(Detail::bitsOf(static_cast<unsigned char>(value))); }
    DataStream& operator<<(char value) override { return put(Detail::bitsOf(value)); }
    DataStream& operator<<(signed char value) override { return put(Detail::bitsOf(value)); }
    DataStream& operator<<(unsigned char value) override { return put(Detail::bitsOf(value)); }
    DataStream& operator<<(short value) override { return put(Detail::bitsOf(value)); }
    DataStream& operator<<(unsigned short value) override { return put(Detail::bitsOf(value)); }
    DataStream& operator<<(int value) override { return put(Detail::bitsOf(value)); }
    DataStream& operator<<(unsigned int value) override { return put(Detail::bitsOf(value)); }
    DataStream& operator<<(long long value) override { return put(Detail::bitsOf(value)); }
    DataStream& operator<<(unsigned long long value) override { return put(Detail::bitsOf(value)); }
    DataStream& operator<<(long value) override { return put(Detail::bitsOf(value)); }
    DataStream& operator<<(unsigned long value) override { return put(Detail::bitsOf(value)); }
    DataStream& operator<<(float value) override { return put(Detail::bitsOf(value)); }
    DataStream& operator<<(double value) override { return put(Detail::bitsOf(value)); }
    DataStream& operator<<(const String& text) override;
    DataStream& operator<<(const std::vector<unsigned char>& bytes) override;

    void Write(unsigned int count, const unsigned char* src) override;
    /// @}

    /// @name Position and size, in bytes
    /// @{
    [[nodiscard]] bool AtEnd() const override { return position_ >= buffer_.size(); }
    [[nodiscard]] unsigned int GetPosition() const override { return position_; }
    [[nodiscard]] unsigned int GetSize() const override { return static_cast<unsigned int>(buffer_.size()); }
    [[nodiscard]] unsigned int GetRemaining() const override { return GetSize() - position_; }
    void SetPosition(unsigned int position) override { position_ = position; }
    void Skip(int count) override;
    /// @}

private:
    template <typename T>
    T read() {
        T value{};
        *this >> value;
        return value;
    }

    /// Writes the bytes of a number, as write() would. The usual case, a number at the end of a buffer that has room
    /// for it, is compiled in place to a test and a move.
    template <typename Bits>
    DataStream& put(Bits bits);

    /// put() where the buffer must grow. Kept out of put(), which takes a fifth longer with it.
    template <typename Bits>
    [[gnu::noinline]] DataStream& putGrowing(Bits bits);

    bool isBigEndian() const { return endianType_ != DefaultEndian && endianType_ != LittleEndian; }

    /// Whether `count` bytes are there to be read. The position may be anywhere.
    bool has(std::size_t count) const { return position_ <= buffer_.size() && count <= buffer_.size() - position_; }

    /// Throws for a number of `width` bytes. Kept out of extract(), which is compiled in place.
    [[noreturn, gnu::noinline, gnu::cold]] void failToExtract(std::size_t width) const;

    /// Allocates what writing `count` bytes at the position takes, so that it cannot fail any more; nothing for 0
    /// bytes, wherever the position is. Throws std::bad_alloc.
    void makeRoom(std::uint64_t count);

    /// Reads `count` bytes, or throws as from `failureLine`.
    void take(std::size_t count, unsigned char* dest, int failureLine);

    /// Writes `count` bytes at the position. Throws std::bad_alloc and changes nothing then.
    [[gnu::noinline]] void write(std::size_t count, const unsigned char* src);

    Detail::ByteBuffer buffer_;
    unsigned int position_ = 0;
    EndianType endianType_ = DefaultEndian;
    bool writeStringLength_ = true;
};

template <typename T>
inline DataStream& ByteStream::extract(T& value) {
    constexpr std::size_t WIDTH = Detail::STORED_WIDTH<T>;
    if (!has(WIDTH)) {
        failToExtract(WIDTH);
    }
    Detail::setFromBits(value, Detail::load<Detail::StoredBits<T>>(buffer_.data() + position_, isBigEndian()));
    position_ += static_cast<unsigned int>(WIDTH);
    return *this;
}

template <typename Bits>
DataStream& ByteStream::put(Bits bits) {
    const unsigned int position = position_;
    if (__builtin_expect(position == buffer_.size() && buffer_.spare() >= sizeof bits, 1)) {
        Detail::store(bits, buffer_.extend(sizeof bits), isBigEndian());
    } else if (has(sizeof bits)) {
        Detail::store(bits, buffer_.data() + position, isBigEndian());
    } else {
        return putGrowing(bits);
    }
    position_ = position + static_cast<unsigned int>(sizeof bits);
    return *this;
}

template <typename Bits>
DataStream& ByteStream::putGrowing(Bits bits) {
    unsigned char bytes[sizeof bits];
    Detail::store(bits, bytes, isBigEndian());
    write(sizeof bytes, bytes);
    return *this;
}

}  // namespace Util

#pragma GCC visibility pop
