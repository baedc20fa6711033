// The bytes of each kind of value in every byte order, as another program reads them and as the stream itself does.

#include <sstream>

#include "tests/CvBase/Util/StreamSupport.h"
#include "tests/support/Text.h"

namespace {

using namespace test;

template <typename T>
std::string shown(T value) {
    std::ostringstream text;
    text.precision(17);
    text << +value << '\n';
    return text.str();
}
std::string shown(char value) {
    return shown(static_cast<signed char>(value));
}
std::string shown(const String& text) {
    return str(text) + '\n';
}

/// Calls `each` with the letter of every kind of value, and values of that type.
template <typename Each>
void forAllValues(Each each) {
    std::vector<unsigned long long> values{0, 0x80, 0x8000, 0x80000000, 1ULL << 63, ULLONG_MAX};
    std::mt19937_64 random(1);
    for (int i = 0; i < 200; ++i) {
        values.push_back(random() >> i % 64);
    }
    for (const unsigned long long bits : values) {
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
}

/// Shows the values in the bytes on standard input. The arguments are the byte order and a letter for each value, both
/// as Python's struct module has them, or "t" for a text.
constexpr const char* SCRIPT = R"(
import struct, sys
def read(kind):
    if kind == "t":
        return sys.stdin.buffer.read(int(read("I")))
    layout = sys.argv[1] + kind
    value = struct.unpack(layout, sys.stdin.buffer.read(struct.calcsize(layout)))
    return (b"%.17g" if kind in "fd" else b"%d") % value
for kind in sys.argv[2]:
    sys.stdout.buffer.write(read(kind) + b"\n")
assert not sys.stdin.buffer.read())";

TEST(ByteStreamValues, AreReadByPythonAndByTheStreamItself) {
    for (const int order : {0, 1, 2, 3, -1, INT_MIN}) {
        SCOPED_TRACE(order);
        std::string kinds, values, read;
        ByteStream stream(0);
        stream.SetEndianType(static_cast<DataStream::EndianType>(order));
        forAllValues([&](char kind, const auto& value) {
            stream << value;
            kinds += kind;
            values += shown(value);
        });
        const Bytes bytes = bytesOf(stream);
        ProcessOptions options;
        options.in.assign(bytes.begin(), bytes.end());
        const ProcessResult python =
            run({"python3", "-c", SCRIPT, order == 0 || order == 1 ? "<" : ">", kinds}, options);
        EXPECT_EQ(python.out, values);
        EXPECT_EQ(python.err, "");

        stream.SetPosition(0);
        forAllValues([&](char, auto value) {
            const unsigned int start = stream.GetPosition();
            value = decltype(value)();
            stream >> value;
            read += shown(value);
            if constexpr (!std::is_same_v<decltype(value), String>) {
                stream.SetPosition(start);
                EXPECT_EQ(stream.ReadPrimitive(decltype(value)()), value);
            }
        });
        EXPECT_EQ(read, values);
        EXPECT_TRUE(stream.AtEnd());
    }
}

}  // namespace
