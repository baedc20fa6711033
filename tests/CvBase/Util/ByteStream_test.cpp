// What streams hold, how they move and grow, how reads fail, and what a stream owes to those who override its
// operations. The bytes of each kind of value are compared with another program's in ByteStream_python_test.cpp.

#include "CvBase/Util/ByteStream.h"

#include <new>
#include <numeric>

#include "CvBase/Util/Exception/DataStreamIO.h"
#include "tests/CvBase/Util/StreamSupport.h"
#include "tests/support/FailingAllocations.h"
#include "tests/support/Text.h"

namespace {

using namespace test;

TEST(ByteStream, KeepsTheBitsOfNaNs) {
    for (const DataStream::EndianType order : {DataStream::LittleEndian, DataStream::BigEndian}) {
        ByteStream stream(0);
        stream.SetEndianType(order);
        stream << 0x7F800001U << 0x7FF0000000000001ULL;
        const Bytes bytes = bytesOf(stream);
        float single = 0;
        double twofold = 0;
        stream.SetPosition(0);
        stream >> single >> twofold;
        stream.Clear();
        stream << single << twofold;
        EXPECT_EQ(bytesOf(stream), bytes);
    }
}

TEST(ByteStream, DropsTheUpperHalfOfALongAndTakesEveryByteButZeroForTrue) {
    ByteStream stream(0);
    stream << static_cast<unsigned long>(0x1122334481828384ULL) << static_cast<long>(0x1122334481828384LL);
    EXPECT_THAT(bytesOf(stream), ElementsAre(0x84, 0x83, 0x82, 0x81, 0x84, 0x83, 0x82, 0x81));

    ByteStream bools(Bytes{0, 1, 2, 0x80, 0xFF});
    for (const unsigned char expected : Bytes{0, 1, 1, 1, 1}) {
        bool value = expected == 0;
        bools >> value;
        EXPECT_EQ(std::memcmp(&value, &expected, 1), 0);
    }
}

TEST(ByteStream, StoresTextsWithOrWithoutTheirLengthAndVectorsWithout) {
    ByteStream stream(0);
    stream.SetEndianType(DataStream::BigEndian);
    stream << String("a") << String() << makeText(std::string_view("b\0c", 3)) << Bytes{8, 9} << Bytes{};
    EXPECT_THAT(bytesOf(stream), ElementsAre(0, 0, 0, 1, 'a', 0, 0, 0, 0, 0, 0, 0, 3, 'b', 0, 'c', 8, 9));
    stream.SetPosition(0);
    for (const char* const expected : {"a", "", "b"}) {
        String text("before");
        stream >> text;
        EXPECT_EQ(text, expected);
    }
    EXPECT_EQ(stream.GetRemaining(), 2U) << "the text's NUL byte must not stop the stream";

    stream.Clear();
    stream.SetWriteStringLength(false);
    stream << String() << String("\x01\x02\x03\x04");
    EXPECT_THAT(bytesOf(stream), ElementsAre(1, 2, 3, 4));
    stream.Clear();
    EXPECT_EQ(stream.GetSize() + stream.GetPosition(), 0U);
    EXPECT_EQ(stream.GetEndianType(), DataStream::BigEndian);
    EXPECT_FALSE(stream.IsWriteStringLength());
}

TEST(ByteStream, StartsWithWhatItIsGivenAndMovesAnywhereModuloTwoToThe32nd) {
    const unsigned char data[] = {1, 2, 3};
    ByteStream reserved(16), none(0, nullptr), stream(3, data);
    EXPECT_TRUE(reserved.AtEnd() && none.AtEnd() && none.GetSize() == 0);
    EXPECT_THAT(bytesOf(stream), ElementsAre(1, 2, 3));
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
}

TEST(ByteStream, GrowsAsItIsWrittenTo) {
    Bytes bytes(70);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    for (const unsigned int reserved : {0U, 1U, 4U, 8U, 40U}) {
        for (unsigned int first = 0; first < 12; ++first) {
            for (const unsigned int count : {0U, 1U, 4U, 5U, 70U}) {
                SCOPED_TRACE(testing::Message() << reserved << " reserved, " << count << " bytes at " << first);
                ByteStream stream(reserved);
                Bytes model;
                for (const unsigned int position : {first, 2U, first + 3, 3 * first + 7}) {
                    stream.SetPosition(position);
                    if (count == 4) {
                        stream << 0x04030201U;
                    } else {
                        stream.Write(count, bytes.data());
                    }
                    model.resize(std::max<std::size_t>(model.size(), count == 0 ? 0 : position + count));
                    std::copy_n(bytes.begin(), count, model.data() + (count == 0 ? 0 : position));
                    ASSERT_EQ(stream.GetPosition(), position + count);
                    ASSERT_EQ(bytesOf(stream), model);
                }
            }
        }
    }
}

TEST(ByteStream, KeepsItsBytesAsItGrowsLarge) {
    for (const unsigned int reserved : {0U, 300000U, 1U << 22}) {
        ByteStream stream(reserved);
        for (int round = 0; round < 2; ++round) {
            stream.Clear();
            Bytes model;
            for (unsigned int i = 1; model.size() < 2000000; ++i) {
                const Bytes block(i * 37 % 9000, static_cast<unsigned char>(i));
                stream << block << static_cast<unsigned char>(i);
                model.insert(model.end(), block.size() + 1, static_cast<unsigned char>(i));
            }
            EXPECT_TRUE(bytesOf(stream) == model) << reserved << " reserved, round " << round;
        }
    }
}

TEST(ByteStream, RefusesToGrowBeyondItsPositions) {
    const Bytes two{1, 2};
    ByteStream stream(two);
    for (const unsigned int position : {0xFFFFFFFEU, 0xFFFFFFFFU}) {
        stream.SetPosition(position);
        EXPECT_THROW(stream << static_cast<short>(1), std::bad_alloc);
        EXPECT_THROW(stream << 1.0, std::bad_alloc);
        EXPECT_THROW(stream << String("a"), std::bad_alloc);
        EXPECT_THROW(stream << two, std::bad_alloc);
        EXPECT_THROW(stream.Write(2, two.data()), std::bad_alloc);
        stream << Bytes();
        stream.Write(0, nullptr);
        EXPECT_EQ(stream.GetPosition(), position);
        EXPECT_EQ(bytesOf(stream), two);
    }
}

constexpr int TEXT_LENGTH_LINE = 74, TEXT_LINE = 81, VECTOR_LINE = 104, READ_LINE = 123, EXTRACT_LINE = 141;

/// Expects that `action` throws a DataStreamIO with `message` out of `line`, of the header when that is EXTRACT_LINE.
void expectFailure(const std::function<void()>& action, const std::string& message, int line) {
    try {
        action();
        ADD_FAILURE() << "nothing was thrown, not " << message;
    } catch (const Util::Exception::DataStreamIO& caught) {
        EXPECT_EQ(caught.GetMessage(), message.c_str());
        EXPECT_EQ(caught.GetSourceFile(), line == EXTRACT_LINE ? "Util/ByteStream.h" : "Util/ByteStream");
        EXPECT_EQ(caught.GetLine(), line);
        EXPECT_EQ(caught.GetOSErrorAtThrow(), 0);
    }
}

/// The positions from which `width` bytes cannot be read out of `size`: cut off, past the end, and where position and
/// width add up to 2^32 and more.
std::vector<unsigned int> positionsWithout(unsigned int width, unsigned int size) {
    std::vector<unsigned int> positions{size, size + 1, width <= size ? size - width + 1 : 0, 0x7FFFFFFF, 0x80000000};
    for (unsigned int back = 1; back <= 9; ++back) {
        positions.push_back(0U - back);
    }
    return positions;
}

template <typename... T>
void expectFailures(unsigned int width) {
    for (const unsigned int size : {0U, width - 1, 10U}) {
        ByteStream stream(Bytes(size, 0xEE));
        for (const unsigned int position : positionsWithout(width, size)) {
            const std::string message = "Can't extract " + std::to_string(width) + " bytes at position " +
                                        std::to_string(position) + ", total size " + std::to_string(size);
            const auto expectRefused = [&](const auto one) {
                auto value = one;
                expectFailure([&] { stream >> value; }, message, EXTRACT_LINE);
                EXPECT_EQ(value, one);
                expectFailure([&] { stream.ReadPrimitive(one); }, message, EXTRACT_LINE);
            };
            stream.SetPosition(position);
            (expectRefused(T{1}), ...);

            const std::string unread = "Can't read " + std::to_string(width) + " bytes";
            Bytes bytes(width, 1), none;
            expectFailure([&] { stream >> bytes; }, unread, VECTOR_LINE);
            expectFailure([&] { stream.Read(width, bytes.data()); }, unread, READ_LINE);
            EXPECT_EQ(bytes, Bytes(width, 1));
            stream >> none;
            stream.Read(0, nullptr);
            EXPECT_EQ(stream.GetPosition(), position);
        }
    }
}

TEST(ByteStreamFailures, WhatIsNotThereChangesNothing) {
    expectFailures<bool, char, signed char, unsigned char>(1);
    expectFailures<short, unsigned short>(2);
    expectFailures<int, unsigned int, long, unsigned long, float>(4);
    expectFailures<long long, unsigned long long, double>(8);
}

TEST(ByteStreamFailures, ATextThatIsNotThereIsEmptyAndItsLengthIsConsumed) {
    const std::string missing = "Can't read string of length ", tooLong = "Improbable string length ";
    // clang-format off
    const struct { unsigned int length, available; std::string message; int line; } rows[] = {
        {0, 0, "", 0}, {5, 5, "", 0}, {5, 4, missing + "5", TEXT_LINE}, {200000, 200000, "", 0},
        {200000, 199999, missing + "200000", TEXT_LINE}, {200001, 200001, tooLong + "200001", TEXT_LENGTH_LINE},
        {0xFFFFFFFF, 8, tooLong + "4294967295", TEXT_LENGTH_LINE},
    };
    // clang-format on
    for (const auto& row : rows) {
        ByteStream stream(0);
        stream << row.length << Bytes(row.available, 'x');
        stream.SetPosition(0);
        String text("before");
        if (row.message.empty()) {
            stream >> text;
        } else {
            expectFailure([&] { stream >> text; }, row.message, row.line);
        }
        const unsigned int read = row.message.empty() ? row.length : 0;
        EXPECT_EQ(text, std::string(read, 'x').c_str());
        EXPECT_EQ(stream.GetPosition(), 4 + read);
    }
    ByteStream tooShort(Bytes(3));
    String text("before");
    expectFailure([&] { tooShort >> text; }, "Can't extract 4 bytes at position 0, total size 3", EXTRACT_LINE);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(tooShort.GetPosition(), 0U);
    tooShort << String(std::string(200001, 'x').c_str());
    EXPECT_EQ(tooShort.GetSize(), 200005U) << "a text longer than can be read is written whole";
}

// Memory exhaustion: a stream that cannot grow is as it was. Each allocation of each operation fails once.

TEST(ByteStreamMemory, AFailedWriteChangesNothing) {
    const Bytes many(1000, 7);
    const String text("A text that no small buffer can hold, to be written with its length");
    const std::vector<std::function<void(ByteStream&)>> writes = {
        [](ByteStream& stream) { stream << 1; },
        [](ByteStream& stream) { stream << 1.0; },
        [&](ByteStream& stream) { stream << text; },
        [&](ByteStream& stream) { stream << many; },
        [&](ByteStream& stream) { stream.Write(1000, many.data()); },
    };
    const Bytes original{1, 2, 3, 4, 5, 6};
    for (const auto& write : writes) {
        // Inside the stream, at its end, and beyond a gap; with memory left for the length of a text, or for nothing.
        for (const unsigned int position : {5U, 6U, 300U}) {
            for (const unsigned int reserved : {6U, 11U}) {
                ByteStream stream(reserved);
                stream << original;
                stream.SetPosition(position);
                int failures = 0;
                exhaustMemory([&] { write(stream); },
                              [&] {
                                  ++failures;
                                  ASSERT_EQ(stream.GetPosition(), position);
                                  ASSERT_EQ(bytesOf(stream), original);
                              });
                EXPECT_GT(stream.GetPosition(), position);
                EXPECT_TRUE(failures > 0 || reserved == 11) << "the write allocated nothing";
            }
        }
    }
}

TEST(ByteStreamMemory, WhatWritesNothingAsksForNothing) {
    ByteStream stream(0);
    stream.SetWriteStringLength(false);
    stream.SetPosition(~0U);
    const String empty("");
    test::failAfter(0);
    EXPECT_NO_THROW(stream << empty << Bytes());
    test::failAfter(-1);
    EXPECT_EQ(stream.GetSize(), 0U);
}

TEST(ByteStreamMemory, AFailedTextReadLeavesTheTextEmpty) {
    const String written("A text that no small buffer of std::string can hold");
    ByteStream stream(0);
    stream << written;
    String text;
    exhaustMemory(
        [&] {
            stream.SetPosition(0);
            text = "before";
            stream >> text;
        },
        [&] { ASSERT_TRUE(text.IsEmpty() || text == "before"); });
    EXPECT_EQ(text, written);
}

/// Texts with a length of 16 bits before the position is moved on by one.
class OwnLengths : public ByteStream {
public:
    OwnLengths() : ByteStream(0) {}
    using ByteStream::operator<<;
    using ByteStream::operator>>;
    DataStream& operator<<(unsigned int value) override { return *this << static_cast<unsigned short>(value); }
    DataStream& operator>>(unsigned int& value) override {
        value = ReadPrimitive(static_cast<unsigned short>(0));
        return *this;
    }
    void SetPosition(unsigned int position) override { ByteStream::SetPosition(position + 1); }
};

TEST(ByteStream, TextsValuesAndSkipsGoThroughWhatIsOverridden) {
    OwnLengths stream;
    stream << String("abc");
    EXPECT_EQ(stream.GetSize(), 5U);
    stream.SetPosition(0U - 1U);
    EXPECT_EQ(stream.ReadPrimitive(0U), 3U);
    stream.SetPosition(0U - 1U);
    String text;
    stream >> text;
    EXPECT_EQ(text, "abc");
    stream.Skip(-4);
    EXPECT_EQ(stream.GetPosition(), 2U);
}

/// The slot of a virtual member function in the table that the compilers of this system share: a pointer to one holds
/// its offset in the table, plus 1 on some processors.
template <typename Function>
std::size_t slotOf(Function DataStream::*function) {
    std::size_t parts[2];
    static_assert(sizeof function == sizeof parts);
    std::memcpy(parts, &function, sizeof function);
    return parts[0] / sizeof(void*);
}

template <typename... T>
std::vector<std::size_t> slots() {
    // clang-format off
    return {
        slotOf(&DataStream::GetEndianType), slotOf(&DataStream::SetEndianType),
        slotOf(&DataStream::IsWriteStringLength), slotOf(&DataStream::SetWriteStringLength),
        slotOf<DataStream&(T&)>(&DataStream::operator>>)...,
        slotOf<DataStream&(String&)>(&DataStream::operator>>), slotOf<DataStream&(Bytes&)>(&DataStream::operator>>),
        slotOf<T(T)>(&DataStream::ReadPrimitive)..., slotOf(&DataStream::Read),
        slotOf<DataStream&(T)>(&DataStream::operator<<)..., slotOf<DataStream&(const String&)>(&DataStream::operator<<),
        slotOf<DataStream&(const Bytes&)>(&DataStream::operator<<), slotOf(&DataStream::Write),
        slotOf(&DataStream::AtEnd), slotOf(&DataStream::GetPosition), slotOf(&DataStream::GetSize),
        slotOf(&DataStream::GetRemaining), slotOf(&DataStream::SetPosition), slotOf(&DataStream::Skip)};
    // clang-format on
}

TEST(DataStream, KeepsTheOrderOfItsVirtualFunctions) {
    const auto inOrder = slots<bool, char, signed char, unsigned char, short, unsigned short, int, unsigned int,
                               long long, unsigned long long, long, unsigned long, float, double>();
    for (std::size_t i = 0; i < inOrder.size(); ++i) {
        EXPECT_EQ(inOrder[i], i);
    }
}

template <typename T, typename = void>
constexpr bool CAN_WRITE = false;
template <typename T>
constexpr bool CAN_WRITE<T, std::void_t<decltype(std::declval<ByteStream&>() << std::declval<T>())>> = true;
static_assert(!CAN_WRITE<const char (&)[5]> && !CAN_WRITE<char*> && CAN_WRITE<bool>, "no pointer is a truth value");
static_assert(!std::is_copy_constructible_v<ByteStream> && !std::is_copy_assignable_v<ByteStream>);

}  // namespace
