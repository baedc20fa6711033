// The bytes that streams hold, and how writing moves and grows them.

#include "CvBase/Util/ByteStream.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <random>
#include <type_traits>
#include <utility>

#include "tests/CvBase/Util/StreamSupport.h"
#include "tests/support/Text.h"

namespace {

using test::Bytes;
using test::bytesOf;
using Util::ByteStream;
using Util::DataStream;

template <typename T>
Bytes imageOf(T const& value) {
    Bytes image(sizeof value);
    std::memcpy(image.data(), &value, sizeof value);
    return image;
}

/// Writes `value` in every byte order, reads it back in both ways, and compares bit by bit.
template <typename T>
void expectBytes(T value, Bytes const& bigEndian) {
    for (int const order : {0, 1, 2, 3, -1, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(order);
        ByteStream stream(0);
        DataStream& any = stream;
        any.SetEndianType(static_cast<DataStream::EndianType>(order));
        EXPECT_EQ(any.GetEndianType(), order);
        EXPECT_EQ(&(any << value), &any);
        bool const isLittle = order == 0 || order == 1;
        EXPECT_EQ(bytesOf(any), isLittle ? Bytes(bigEndian.rbegin(), bigEndian.rend()) : bigEndian);
        EXPECT_EQ(any.GetPosition(), bigEndian.size());

        T read{};
        any.SetPosition(0);
        EXPECT_EQ(&(any >> read), &any);
        EXPECT_EQ(imageOf(read), imageOf(value));
        EXPECT_TRUE(any.AtEnd());
        any.SetPosition(0);
        EXPECT_EQ(imageOf(any.ReadPrimitive(T{})), imageOf(value));
        EXPECT_TRUE(any.AtEnd());
    }
}

TEST(ByteStream, StoresNumbersInBothByteOrders) {
    expectBytes(true, {1});
    expectBytes(false, {0});
    expectBytes('A', {0x41});
    expectBytes<signed char>(-2, {0xFE});
    expectBytes<unsigned char>(0xFE, {0xFE});
    expectBytes<short>(-2, {0xFF, 0xFE});
    expectBytes<unsigned short>(0x8182, {0x81, 0x82});
    expectBytes(1, {0, 0, 0, 1});
    expectBytes(INT_MIN, {0x80, 0, 0, 0});
    expectBytes(0x81828384U, {0x81, 0x82, 0x83, 0x84});
    expectBytes(-2LL, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE});
    expectBytes(0x8182838485868788ULL, {0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88});
    expectBytes(-2L, {0xFF, 0xFF, 0xFF, 0xFE});
    expectBytes<long>(INT_MIN, {0x80, 0, 0, 0});
    expectBytes(0x81828384UL, {0x81, 0x82, 0x83, 0x84});
    expectBytes(1.0F, {0x3F, 0x80, 0, 0});
    expectBytes(-0.0F, {0x80, 0, 0, 0});
    expectBytes(1.0, {0x3F, 0xF0, 0, 0, 0, 0, 0, 0});
    expectBytes(std::numeric_limits<double>::denorm_min(), {0, 0, 0, 0, 0, 0, 0, 1});
}

TEST(ByteStream, KeepsTheBitsOfNaNs) {
    for (DataStream::EndianType const order : {DataStream::LittleEndian, DataStream::BigEndian}) {
        ByteStream stream(0);
        stream.SetEndianType(order);
        stream << 0x7F800001U << 0x7FF0000000000001ULL;
        Bytes const bytes = bytesOf(stream);
        float single = 0;
        double twofold = 0;
        stream.SetPosition(0);
        stream >> single >> twofold;
        EXPECT_EQ(imageOf(single), imageOf(0x7F800001U));
        EXPECT_EQ(imageOf(twofold), imageOf(0x7FF0000000000001ULL));
        stream.Clear();
        stream << single << twofold;
        EXPECT_EQ(bytesOf(stream), bytes);
    }
}

TEST(ByteStream, TakesLongsForNumbersOf32Bits) {
    ByteStream stream(0);
    stream << static_cast<unsigned long>(0x1122334481828384ULL) << static_cast<long>(0x1122334481828384LL);
    EXPECT_EQ(bytesOf(stream), (Bytes{0x84, 0x83, 0x82, 0x81, 0x84, 0x83, 0x82, 0x81}));
    stream.SetPosition(0);
    EXPECT_EQ(stream.ReadPrimitive(0UL), 0x81828384UL);
    EXPECT_EQ(stream.ReadPrimitive(0L), -0x7E7D7C7CL);
}

TEST(ByteStream, ReadsEveryByteButZeroAsTrue) {
    Bytes const bytes{0, 1, 2, 0x80, 0xFF};
    ByteStream stream(bytes);
    for (unsigned char const byte : bytes) {
        bool value = byte == 0;
        stream >> value;
        EXPECT_EQ(imageOf(value), Bytes{static_cast<unsigned char>(byte != 0)});
    }
}

TEST(ByteStream, StoresTextsWithOrWithoutTheirLengthAndVectorsWithout) {
    ByteStream stream(0);
    stream.SetEndianType(DataStream::BigEndian);
    stream << String("a\xC3\xA9") << String() << String("") << test::makeText(std::string_view("b\0c", 3));
    stream << Bytes{8, 9} << Bytes{};
    EXPECT_EQ(bytesOf(stream),
              (Bytes{0, 0, 0, 3, 'a', 0xC3, 0xA9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 'b', 0, 'c', 8, 9}));
    stream.SetPosition(0);
    for (char const* const expected : {"a\xC3\xA9", "", "", "b"}) {
        String text("before");
        stream >> text;
        EXPECT_EQ(text, expected);
    }
    EXPECT_EQ(stream.GetRemaining(), 2U) << "the text's NUL byte must not stop the stream";
    Bytes pair(2);
    stream >> pair;
    EXPECT_EQ(pair, (Bytes{8, 9}));

    stream.Clear();
    stream.SetWriteStringLength(false);
    EXPECT_FALSE(stream.IsWriteStringLength());
    stream << String() << String("\x01\x02\x03\x04");
    stream.SetPosition(0);
    EXPECT_EQ(stream.ReadPrimitive(0), 0x01020304);
}

TEST(ByteStream, StartsWithWhatItIsGiven) {
    unsigned char const data[] = {1, 2, 3};
    ByteStream reserved(16);
    ByteStream none(0, nullptr);
    ByteStream copied(3, data);
    ByteStream fromVector(Bytes{1, 2, 3});
    for (ByteStream* stream : {&reserved, &none, &copied, &fromVector}) {
        bool const isEmpty = stream == &reserved || stream == &none;
        EXPECT_EQ(bytesOf(*stream), isEmpty ? Bytes() : Bytes(data, data + 3));
        EXPECT_EQ(stream->GetPosition(), 0U);
        EXPECT_EQ(stream->GetRemaining(), stream->GetSize());
        EXPECT_EQ(stream->AtEnd(), isEmpty);
        EXPECT_EQ(stream->GetEndianType(), 0);
        EXPECT_TRUE(stream->IsWriteStringLength());
    }
    copied.SetEndianType(DataStream::BigEndian);
    copied.SetWriteStringLength(false);
    copied.SetPosition(2);
    copied.Clear();
    EXPECT_EQ(copied.GetSize() + copied.GetPosition(), 0U);
    EXPECT_EQ(copied.GetEndianType(), DataStream::BigEndian);
    EXPECT_FALSE(copied.IsWriteStringLength());
}

TEST(ByteStream, MovesAnywhereModuloTwoToThe32nd) {
    ByteStream stream(Bytes{1, 2, 3});
    stream.Skip(1);
    stream.Skip(-2);
    EXPECT_EQ(stream.GetPosition(), 0xFFFFFFFFU);
    EXPECT_TRUE(stream.AtEnd());
    EXPECT_EQ(stream.GetRemaining(), 4U);
    stream.Skip(3);
    EXPECT_EQ(stream.ReadPrimitive('\0'), '\3');
    stream.SetPosition(5);
    stream.Skip(INT_MIN);
    EXPECT_EQ(stream.GetPosition(), 0x80000005U);
    stream.SetPosition(4);
    EXPECT_TRUE(stream.AtEnd());
    EXPECT_EQ(stream.GetRemaining(), 0xFFFFFFFFU);
}

/// What writing is: the bytes go over what is there and behind it, with zero bytes in a gap.
void writeToModel(Bytes& model, std::size_t& position, Bytes const& bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i, ++position) {
        model.resize(std::max(model.size(), position + 1));
        model[position] = bytes[i];
    }
}

TEST(ByteStream, GrowsAsItIsWrittenTo) {
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        ByteStream stream(static_cast<unsigned int>(random() % 40));
        Bytes model;
        std::size_t position = 0;
        for (int step = 0; step < 40; ++step) {
            Bytes bytes(std::size_t{1} << random() % 4);
            if (random() % 3 == 0) {
                bytes.resize(random() % 70);
            }
            for (unsigned char& byte : bytes) {
                byte = static_cast<unsigned char>(random() % 255 + 1);
            }
            if (random() % 3 == 0) {
                position = random() % (model.size() + 12);
                stream.SetPosition(static_cast<unsigned int>(position));
            }
            writeToModel(model, position, bytes);
            std::uint64_t number = 0;
            for (std::size_t i = 0; i < bytes.size() && i < 8; ++i) {
                number |= std::uint64_t{bytes[i]} << 8 * i;
            }
            switch (bytes.size()) {
                case 1:
                    stream << static_cast<unsigned char>(number);
                    break;
                case 2:
                    stream << static_cast<unsigned short>(number);
                    break;
                case 4:
                    stream << static_cast<unsigned int>(number);
                    break;
                case 8:
                    stream << static_cast<unsigned long long>(number);
                    break;
                default:
                    stream.Write(static_cast<unsigned int>(bytes.size()), bytes.empty() ? nullptr : bytes.data());
            }
            ASSERT_EQ(stream.GetPosition(), position);
            ASSERT_EQ(bytesOf(stream), model);
        }
    }
}

TEST(ByteStream, RefusesToGrowBeyondItsPositions) {
    Bytes const original{1, 2, 3, 4, 5, 6, 7, 8};
    ByteStream stream(original);
    Bytes const two{1, 2};
    for (unsigned int const position : {0xFFFFFFFEU, 0xFFFFFFFFU}) {
        stream.SetPosition(position);
        EXPECT_THROW(stream << static_cast<short>(1), std::bad_alloc);
        EXPECT_THROW(stream << 1.0, std::bad_alloc);
        EXPECT_THROW(stream << String("a"), std::bad_alloc);
        EXPECT_THROW(stream << two, std::bad_alloc);
        EXPECT_THROW(stream.Write(2, two.data()), std::bad_alloc);
        stream << Bytes();
        stream.Write(0, nullptr);
        EXPECT_EQ(stream.GetPosition(), position);
        EXPECT_EQ(bytesOf(stream), original);
    }
}

template <typename Stream, typename T, typename = void>
constexpr bool CAN_WRITE = false;
template <typename Stream, typename T>
constexpr bool CAN_WRITE<Stream, T, std::void_t<decltype(std::declval<Stream&>() << std::declval<T>())>> = true;

TEST(ByteStream, DoesNotTakePointersForTruthValues) {
    static_assert(!CAN_WRITE<ByteStream, char const(&)[5]> && !CAN_WRITE<DataStream, char const(&)[5]>);
    static_assert(!CAN_WRITE<ByteStream, char*> && !CAN_WRITE<DataStream, int const*>);
    static_assert(CAN_WRITE<ByteStream, bool> && CAN_WRITE<DataStream, String> && CAN_WRITE<DataStream, std::size_t>);
    static_assert(!std::is_copy_constructible_v<ByteStream> && !std::is_copy_assignable_v<ByteStream>);
}

}  // namespace
