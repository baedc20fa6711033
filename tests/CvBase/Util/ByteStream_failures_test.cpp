// Reads that fail, what they leave behind, and what a stream owes to those who override its operations.

#include <gmock/gmock.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/CvBase/Util/StreamSupport.h"
#include "tests/support/Text.h"

namespace {

using test::Bytes;
using test::expectStreamFailure;
using Util::ByteStream;
using Util::DataStream;

constexpr int TEXT_LENGTH_LINE = 74;
constexpr int TEXT_LINE = 81;
constexpr int VECTOR_LINE = 104;
constexpr int READ_LINE = 123;
constexpr int EXTRACT_LINE = 141;

/// The positions from which `width` bytes cannot be read out of `size`: cut off, behind the end, and where position and
/// width add up to 2^32 and more.
std::vector<unsigned int> positionsWithout(unsigned int width, unsigned int size) {
    std::vector<unsigned int> positions{size, size + 1, 0x7FFFFFFF, 0x80000000};
    for (unsigned int back = 1; back <= 9; ++back) {
        positions.push_back(0U - back);
    }
    if (width <= size) {
        positions.push_back(size - width + 1);
    } else {
        positions.push_back(0);
    }
    return positions;
}

template <typename T>
void expectFailures(unsigned int width) {
    for (unsigned int const size : {0U, width - 1, 10U}) {
        ByteStream stream(Bytes(size, 0xEE));
        for (unsigned int const position : positionsWithout(width, size)) {
            std::string const message = "Can't extract " + std::to_string(width) + " bytes at position " +
                                        std::to_string(position) + ", total size " + std::to_string(size);
            stream.SetPosition(position);
            T value = 1;
            expectStreamFailure([&] { stream >> value; }, message, "Util/ByteStream.h", EXTRACT_LINE);
            EXPECT_EQ(value, T{1});
            expectStreamFailure([&] { stream.ReadPrimitive(T{}); }, message, "Util/ByteStream.h", EXTRACT_LINE);
            EXPECT_EQ(stream.GetPosition(), position);
        }
    }
}

TEST(ByteStreamFailures, ANumberThatIsNotThereChangesNothing) {
    expectFailures<bool>(1);
    expectFailures<char>(1);
    expectFailures<signed char>(1);
    expectFailures<unsigned char>(1);
    expectFailures<short>(2);
    expectFailures<unsigned short>(2);
    expectFailures<int>(4);
    expectFailures<unsigned int>(4);
    expectFailures<long long>(8);
    expectFailures<unsigned long long>(8);
    expectFailures<long>(4);
    expectFailures<unsigned long>(4);
    expectFailures<float>(4);
    expectFailures<double>(8);
}

TEST(ByteStreamFailures, BytesThatAreNotThereChangeNothing) {
    ByteStream stream(Bytes(10, 0xEE));
    for (unsigned int const count : {1U, 3U, 10U, 11U}) {
        for (unsigned int const position : positionsWithout(count, 10)) {
            std::string const message = "Can't read " + std::to_string(count) + " bytes";
            Bytes bytes(count, 1);
            stream.SetPosition(position);
            expectStreamFailure([&] { stream >> bytes; }, message, "Util/ByteStream", VECTOR_LINE);
            expectStreamFailure([&] { stream.Read(count, bytes.data()); }, message, "Util/ByteStream", READ_LINE);
            EXPECT_EQ(bytes, Bytes(count, 1));
            Bytes none;
            stream >> none;
            stream.Read(0, nullptr);
            EXPECT_EQ(stream.GetPosition(), position);
        }
    }
    Bytes all(10);
    stream.SetPosition(0);
    stream.Read(10, all.data());
    EXPECT_EQ(all, Bytes(10, 0xEE));
}

TEST(ByteStreamFailures, ATextThatIsNotThereIsEmptyAndItsLengthIsConsumed) {
    struct Case {
        unsigned int length;
        unsigned int available;
        char const* message;  // null: the text is read
        int line;
    };
    Case const cases[] = {
        {0, 0, nullptr, 0},
        {5, 5, nullptr, 0},
        {5, 4, "Can't read string of length 5", TEXT_LINE},
        {1, 0, "Can't read string of length 1", TEXT_LINE},
        {200000, 200000, nullptr, 0},
        {200000, 199999, "Can't read string of length 200000", TEXT_LINE},
        {200001, 200001, "Improbable string length 200001", TEXT_LENGTH_LINE},
        {200001, 0, "Improbable string length 200001", TEXT_LENGTH_LINE},
        {0xFFFFFFFF, 8, "Improbable string length 4294967295", TEXT_LENGTH_LINE},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(testing::Message() << c.length << " of " << c.available);
        ByteStream stream(0);
        stream << c.length << Bytes(c.available, 'x');
        stream.SetPosition(0);
        String text("before");
        if (c.message == nullptr) {
            stream >> text;
            EXPECT_EQ(test::bytesOf(text).value_or(""), std::string(c.length, 'x'));
            EXPECT_EQ(stream.GetPosition(), 4 + c.length);
        } else {
            expectStreamFailure([&] { stream >> text; }, c.message, "Util/ByteStream", c.line);
            EXPECT_TRUE(text.IsEmpty());
            EXPECT_EQ(stream.GetPosition(), 4U);
        }
    }
}

TEST(ByteStreamFailures, ATextWithoutALengthIsEmpty) {
    ByteStream stream(Bytes(3));
    String text("before");
    expectStreamFailure([&] { stream >> text; }, "Can't extract 4 bytes at position 0, total size 3",
                        "Util/ByteStream.h", EXTRACT_LINE);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(stream.GetPosition(), 0U);
}

TEST(ByteStreamFailures, ATextLongerThanTheLimitIsWrittenWhole) {
    ByteStream stream(0);
    stream << String(std::string(200001, 'x').c_str());
    EXPECT_EQ(stream.GetSize(), 200005U);
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

TEST(ByteStreamFailures, TextsValuesAndSkipsGoThroughWhatIsOverridden) {
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
    static_assert(sizeof function == 2 * sizeof(void*));
    std::size_t parts[2];
    std::memcpy(parts, &function, sizeof function);
    return parts[0] / sizeof(void*);
}

template <typename... T>
void expectNumberSlots() {
    std::vector<std::size_t> const read{slotOf<DataStream&(T&)>(&DataStream::operator>>)...};
    std::vector<std::size_t> const primitive{slotOf<T(T)>(&DataStream::ReadPrimitive)...};
    std::vector<std::size_t> const write{slotOf<DataStream&(T)>(&DataStream::operator<<)...};
    for (std::size_t i = 0; i < sizeof...(T); ++i) {
        EXPECT_EQ(read[i], 4 + i);
        EXPECT_EQ(primitive[i], 20 + i);
        EXPECT_EQ(write[i], 35 + i);
    }
}

TEST(DataStream, KeepsTheOrderOfItsVirtualFunctions) {
    expectNumberSlots<bool, char, signed char, unsigned char, short, unsigned short, int, unsigned int, long long,
                      unsigned long long, long, unsigned long, float, double>();
    std::size_t const slots[] = {slotOf(&DataStream::GetEndianType),
                                 slotOf(&DataStream::SetEndianType),
                                 slotOf(&DataStream::IsWriteStringLength),
                                 slotOf(&DataStream::SetWriteStringLength),
                                 slotOf<DataStream&(String&)>(&DataStream::operator>>),
                                 slotOf<DataStream&(Bytes&)>(&DataStream::operator>>),
                                 slotOf(&DataStream::Read),
                                 slotOf<DataStream&(String const&)>(&DataStream::operator<<),
                                 slotOf<DataStream&(Bytes const&)>(&DataStream::operator<<),
                                 slotOf(&DataStream::Write),
                                 slotOf(&DataStream::AtEnd),
                                 slotOf(&DataStream::GetPosition),
                                 slotOf(&DataStream::GetSize),
                                 slotOf(&DataStream::GetRemaining),
                                 slotOf(&DataStream::SetPosition),
                                 slotOf(&DataStream::Skip)};
    EXPECT_THAT(slots, testing::ElementsAre(0, 1, 2, 3, 18, 19, 34, 49, 50, 51, 52, 53, 54, 55, 56, 57));
    static_assert(std::has_virtual_destructor_v<DataStream>);
}

}  // namespace
