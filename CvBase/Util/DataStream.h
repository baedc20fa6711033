#pragma once

#include <cstdint>
#include <vector>

#include "CvBase/common/common_string.h"
#include "CvBase/common/common_types.h"

#pragma GCC visibility push(default)

namespace Util {

/// Reads and writes typed values as bytes, at one position that reading and writing both move. ByteStream is the stream
/// in memory; a function that takes a DataStream works with any other, too.
///
///     void store(Util::DataStream& stream, const Settings& settings) {
///         stream << settings.version << settings.name;
///     }
///
///     type                                    bytes
///     bool                                    1: 0 or 1; any other value reads as true
///     char, signed char, unsigned char        1
///     short, unsigned short                   2
///     int, unsigned int, long, unsigned long  4
///     long long, unsigned long long           8
///     float, double                           4, 8 (IEEE 754)
///     String                                  a 4-byte unsigned number of bytes, then the bytes, without a terminator
///     std::vector<unsigned char>              the bytes alone
///
/// Signed numbers are two's complement. `long` has 32 bits here on every processor, as on the 32-bit Mac: writing a
/// 64-bit `long` drops its upper half. On 64-bit processors uint64_t and size_t choose this overload. Pass 64-bit
/// values as (unsigned) long long.
///
/// A read throws Util::Exception::DataStreamIO when the bytes end too soon.
class DataStream : private noncopyable {
public:
    /// The order of the bytes of a number, also of a text's length. Every other value acts as BigEndian.
    enum EndianType : std::int32_t {
        DefaultEndian = 0,  ///< least significant byte first
        LittleEndian = 1,   ///< least significant byte first
        BigEndian = 2       ///< most significant byte first
    };

    /// The byte order of all later reads and writes of numbers; a new stream has DefaultEndian.
    [[nodiscard]] virtual EndianType GetEndianType() const = 0;
    virtual void SetEndianType(EndianType endianType) = 0;

    /// Whether the length of a text is written in front of it; true for a new stream. When it is false, operator>>
    /// cannot read the text back, since it always reads a length first.
    [[nodiscard]] virtual bool IsWriteStringLength() const = 0;
    virtual void SetWriteStringLength(bool writeStringLength) = 0;

    /// @name Reading
    /// @{

    /// Each sets `value` to what is stored at the position, and moves the position past it. A failure leaves the value
    /// and the position as they were.
    virtual DataStream& operator>>(bool& value) = 0;
    virtual DataStream& operator>>(char& value) = 0;
    virtual DataStream& operator>>(signed char& value) = 0;
    virtual DataStream& operator>>(unsigned char& value) = 0;
    virtual DataStream& operator>>(short& value) = 0;
    virtual DataStream& operator>>(unsigned short& value) = 0;
    virtual DataStream& operator>>(int& value) = 0;
    virtual DataStream& operator>>(unsigned int& value) = 0;
    virtual DataStream& operator>>(long long& value) = 0;
    virtual DataStream& operator>>(unsigned long long& value) = 0;
    virtual DataStream& operator>>(long& value) = 0;
    virtual DataStream& operator>>(unsigned long& value) = 0;
    virtual DataStream& operator>>(float& value) = 0;
    virtual DataStream& operator>>(double& value) = 0;

    /// The text ends at its first NUL byte; the position moves past all its bytes. A length of more than 200000 bytes
    /// is taken for damage and refused, although such a text can be written. A failure, unlike those of the others,
    /// leaves the text null, and the position after the length if that could be read.
    virtual DataStream& operator>>(String& text) = 0;

    /// Reads as many bytes as the vector has elements; give it its size first. A failure leaves it as it was.
    virtual DataStream& operator>>(std::vector<unsigned char>& bytes) = 0;
    /// @}

    /// @name Reading a value to return it
    /// @{

    /// As `stream >> value`. The argument only says which type to read: `ReadPrimitive(0U)` reads an unsigned int.
    virtual bool ReadPrimitive(bool) = 0;
    virtual char ReadPrimitive(char) = 0;
    virtual signed char ReadPrimitive(signed char) = 0;
    virtual unsigned char ReadPrimitive(unsigned char) = 0;
    virtual short ReadPrimitive(short) = 0;
    virtual unsigned short ReadPrimitive(unsigned short) = 0;
    virtual int ReadPrimitive(int) = 0;
    virtual unsigned int ReadPrimitive(unsigned int) = 0;
    virtual long long ReadPrimitive(long long) = 0;
    virtual unsigned long long ReadPrimitive(unsigned long long) = 0;
    virtual long ReadPrimitive(long) = 0;
    virtual unsigned long ReadPrimitive(unsigned long) = 0;
    virtual float ReadPrimitive(float) = 0;
    virtual double ReadPrimitive(double) = 0;
    /// @}

    /// Reads `count` bytes into `dest`, which may be null when `count` is 0.
    virtual void Read(unsigned int count, unsigned char* dest) = 0;

    /// @name Writing
    /// @{

    /// Each puts the value at the position, over what is there, and moves the position past it.
    virtual DataStream& operator<<(bool value) = 0;
    virtual DataStream& operator<<(char value) = 0;
    virtual DataStream& operator<<(signed char value) = 0;
    virtual DataStream& operator<<(unsigned char value) = 0;
    virtual DataStream& operator<<(short value) = 0;
    virtual DataStream& operator<<(unsigned short value) = 0;
    virtual DataStream& operator<<(int value) = 0;
    virtual DataStream& operator<<(unsigned int value) = 0;
    virtual DataStream& operator<<(long long value) = 0;
    virtual DataStream& operator<<(unsigned long long value) = 0;
    virtual DataStream& operator<<(long value) = 0;
    virtual DataStream& operator<<(unsigned long value) = 0;
    virtual DataStream& operator<<(float value) = 0;
    virtual DataStream& operator<<(double value) = 0;

    /// All bytes of the text, embedded NULs too; without its length in front when IsWriteStringLength() is false.
    virtual DataStream& operator<<(const String& text) = 0;

    /// The bytes alone; their number is not written.
    virtual DataStream& operator<<(const std::vector<unsigned char>& bytes) = 0;

    /// A pointer, such as "text", would be written as a bool. Write String("text").
    template <typename T>
    DataStream& operator<<(const T* pointer) = delete;
    /// @}

    /// Writes the `count` bytes at `src`, which may be null when `count` is 0.
    virtual void Write(unsigned int count, const unsigned char* src) = 0;

    /// Whether no byte is left at the position.
    [[nodiscard]] virtual bool AtEnd() const = 0;

    /// The offset in bytes from the start of the stream.
    [[nodiscard]] virtual unsigned int GetPosition() const = 0;

    /// The number of bytes in the stream.
    [[nodiscard]] virtual unsigned int GetSize() const = 0;

    /// GetSize() - GetPosition(), modulo 2^32 when the position is past the end.
    [[nodiscard]] virtual unsigned int GetRemaining() const = 0;

    /// Moves to any position. Past the end every read fails, and a write fills the gap with zero bytes.
    virtual void SetPosition(unsigned int position) = 0;

    /// Moves by `count` bytes, backwards when it is negative, modulo 2^32: there is no check at either end.
    virtual void Skip(int count) = 0;

    virtual ~DataStream() = default;
};

}  // namespace Util

#pragma GCC visibility pop
