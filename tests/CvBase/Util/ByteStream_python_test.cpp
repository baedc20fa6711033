// Streams and another program's idea of the same bytes, in both directions and every byte order.

#include <sstream>

#include "tests/CvBase/Util/StreamSupport.h"
#include "tests/support/Test.h"

namespace {

using namespace test;
using Util::ByteStream;
using Util::DataStream;

template <typename T>
std::string shown(T value) {
    std::ostringstream text;
    text.precision(17);
    text << +value << '\n';
    return text.str();
}
std::string shown(const String& text) {
    std::ostringstream digits;
    for (unsigned int i = 0; i < text.Length(); ++i) {
        digits << std::hex << static_cast<int>(static_cast<unsigned char>(text.CStr()[i]));
    }
    return digits.str() + '\n';
}

/// Calls `each` with the letter of every kind of value, and a value of that type.
template <typename Each>
void forAllKinds(unsigned long long bits, Each each) {
    each('?', bits % 2 != 0);
    each('b', static_cast<char>(static_cast<signed char>(bits)));
    each('b', static_cast<signed char>(bits));
    each('B', static_cast<unsigned char>(bits));
    each('h', static_cast<short>(bits));
    each('H', static_cast<unsigned short>(bits));
    each('i', static_cast<int>(bits));
    each('I', static_cast<unsigned int>(bits));
    each('q', static_cast<long long>(bits));
    each('Q', bits);
    each('l', static_cast<long>(static_cast<int>(bits)));
    each('L', static_cast<unsigned long>(static_cast<unsigned int>(bits)));
    each('f', static_cast<float>(static_cast<long long>(bits)) / 3);
    each('d', static_cast<double>(static_cast<long long>(bits)) / 3);
    each('t', String(std::string(static_cast<std::size_t>(bits % 40), 'x').c_str()) + String("\xC3\xA9"));
}

template <typename Each>
void forAllValues(Each each) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 200; ++i) {
        forAllKinds(random() >> i % 64, each);
    }
    for (const unsigned long long bits : {0ULL, 0x80ULL, 0x8000ULL, 0x80000000ULL, 1ULL << 63, ULLONG_MAX}) {
        forAllKinds(bits, each);
    }
}

std::string python(std::vector<std::string> arguments, const std::string& in) {
    arguments.insert(arguments.begin(), {"python3", BYTE_STREAM_SCRIPT});
    ProcessOptions options;
    options.in = in;
    const ProcessResult result = test::run(arguments, options);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return result.out;
}

TEST(ByteStreamAndPython, AreReadByEachOther) {
    for (const int order : {0, 1, 2, 3, -1, INT_MIN}) {
        const std::string pythonOrder = order == 0 || order == 1 ? "<" : ">";
        std::string kinds, values;
        ByteStream stream(0);
        stream.SetEndianType(static_cast<DataStream::EndianType>(order));
        forAllValues([&](char kind, const auto& value) {
            stream << value;
            kinds += kind;
            values += shown(value);
        });
        const test::Bytes bytes = bytesOf(stream);
        EXPECT_EQ(python({pythonOrder, kinds, "--read"}, std::string(bytes.begin(), bytes.end())), values) << order;

        const std::string written = python({pythonOrder, kinds}, values);
        ByteStream other(test::Bytes(written.begin(), written.end()));
        other.SetEndianType(static_cast<DataStream::EndianType>(order));
        std::string read;
        forAllValues([&](char, auto value) {
            const unsigned int start = other.GetPosition();
            value = decltype(value)();
            other >> value;
            read += shown(value);
            if constexpr (!std::is_same_v<decltype(value), String>) {
                other.SetPosition(start);
                EXPECT_EQ(other.ReadPrimitive(decltype(value)()), value);
            }
        });
        EXPECT_EQ(read, values) << order;
        EXPECT_TRUE(other.AtEnd());
    }
}

}  // namespace
