// Streams and another program's idea of the same bytes, in both directions and both byte orders.

#include <climits>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "tests/CvBase/Util/StreamSupport.h"
#include "tests/support/Process.h"

namespace {

using test::Bytes;
using Util::ByteStream;
using Util::DataStream;

std::string shown(double value) {
    char digits[40];
    std::snprintf(digits, sizeof digits, "%.17g", value);
    return digits;
}
std::string shown(unsigned long long value) {
    return std::to_string(value);
}
template <typename T>
std::string shown(T value) {
    if constexpr (std::is_floating_point_v<T>) {
        return shown(static_cast<double>(value));
    } else {
        return std::to_string(value);
    }
}
std::string hex(unsigned char const* bytes, std::size_t size) {
    std::string digits;
    for (std::size_t i = 0; i < size; ++i) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02x", bytes[i]);
        digits += pair;
    }
    return digits;
}
std::string shown(Bytes const& bytes) {
    return hex(bytes.data(), bytes.size());
}
std::string shown(String const& text) {
    return hex(reinterpret_cast<unsigned char const*>(text.CStr()), text.Length());
}

/// Puts values through a stream, or takes them from it, noting each as a line "KIND VALUE".
class Transcript {
public:
    explicit Transcript(DataStream& stream) : stream_(stream) {}

    template <typename T>
    void write(std::string const& kind, T const& value) {
        stream_ << value;
        note(kind, value);
    }

    template <typename T>
    void read(std::string const& kind, T value) {
        stream_ >> value;
        note(kind, value);
    }

    std::string const& lines() const { return lines_; }
    std::vector<std::string> const& kinds() const { return kinds_; }

private:
    template <typename T>
    void note(std::string const& kind, T const& value) {
        kinds_.push_back(kind);
        lines_ += kind + " " + shown(value) + "\n";
    }

    DataStream& stream_;
    std::string lines_;
    std::vector<std::string> kinds_;
};

/// Calls `each` with every kind, its name and a value of its type.
template <typename Each>
void forAllKinds(Each each, unsigned long long bits) {
    each("bool", bits % 2 != 0);
    each("char", static_cast<char>(static_cast<signed char>(bits)));
    each("char", static_cast<signed char>(bits));
    each("uchar", static_cast<unsigned char>(bits));
    each("short", static_cast<short>(bits));
    each("ushort", static_cast<unsigned short>(bits));
    each("int", static_cast<int>(bits));
    each("uint", static_cast<unsigned int>(bits));
    each("longlong", static_cast<long long>(bits));
    each("ulonglong", bits);
    each("long", static_cast<long>(static_cast<int>(bits)));
    each("ulong", static_cast<unsigned long>(static_cast<unsigned int>(bits)));
    each("float", static_cast<float>(static_cast<long long>(bits)) / 3);
    each("double", static_cast<double>(static_cast<long long>(bits)) / 3);
    each("text", String(std::string(static_cast<std::size_t>(bits % 40), 'x').c_str()) + String("\xC3\xA9"));
    each("bytes:3", Bytes{static_cast<unsigned char>(bits), 0, 0xFF});
}

struct Order {
    DataStream::EndianType type;
    char const* name;
};
constexpr Order ORDERS[] = {{DataStream::LittleEndian, "little"}, {DataStream::BigEndian, "big"}};

std::vector<unsigned long long> sampleBits() {
    std::vector<unsigned long long> bits{0, 1, 0x7F, 0x80, 0x7FFF, 0x8000, INT_MAX, 0x80000000, LLONG_MAX, ULLONG_MAX};
    std::mt19937_64 random(1);
    for (int i = 0; i < 200; ++i) {
        bits.push_back(random());
    }
    return bits;
}

test::ProcessResult python(std::vector<std::string> arguments, std::string in) {
    arguments.insert(arguments.begin(), {"python3", BYTE_STREAM_SCRIPT});
    test::ProcessOptions options;
    options.in = std::move(in);
    return test::run(arguments, options);
}

TEST(ByteStreamAndPython, AreReadByEachOther) {
    for (Order const& order : ORDERS) {
        SCOPED_TRACE(order.name);
        ByteStream stream(0);
        stream.SetEndianType(order.type);
        Transcript written(stream);
        for (unsigned long long const bits : sampleBits()) {
            forAllKinds([&](char const* kind, auto const& value) { written.write(kind, value); }, bits);
        }
        Bytes const bytes = test::bytesOf(stream);

        std::vector<std::string> arguments{"decode", order.name};
        arguments.insert(arguments.end(), written.kinds().begin(), written.kinds().end());
        test::ProcessResult const decoded = python(arguments, std::string(bytes.begin(), bytes.end()));
        ASSERT_EQ(decoded.exitStatus, 0) << decoded.err;
        EXPECT_EQ(decoded.out, written.lines());

        test::ProcessResult const encoded = python({"encode", order.name}, written.lines());
        ASSERT_EQ(encoded.exitStatus, 0) << encoded.err;
        ByteStream other(Bytes(encoded.out.begin(), encoded.out.end()));
        other.SetEndianType(order.type);
        Transcript read(other);
        for (unsigned long long const bits : sampleBits()) {
            forAllKinds(
                [&](char const* kind, auto value) {
                    if constexpr (std::is_same_v<decltype(value), Bytes>) {
                        value.assign(value.size(), 0x55);
                    } else {
                        value = decltype(value)();
                    }
                    read.read(kind, value);
                },
                bits);
        }
        EXPECT_EQ(read.lines(), written.lines());
        EXPECT_TRUE(other.AtEnd());
    }
}

}  // namespace
