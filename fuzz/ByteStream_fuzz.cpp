// Sequences of operations on a ByteStream, against a vector, a position and the format's table.

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <vector>

#include "CvBase/Util/ByteStream.h"
#include "CvBase/Util/Exception/DataStreamIO.h"
#include "fuzz/Fuzz.h"
#include "fuzz/TextModel.h"

namespace {

using fuzz::expect;
using fuzz::expectEqual;
using Util::ByteStream;
using Bytes = std::vector<unsigned char>;

/// What a stream should be.
struct StreamModel {
    Bytes bytes;
    unsigned int position = 0;
    bool isReversed = false;
    bool hasLengths = true;

    /// The bytes of a number, from those of the processor's own order, which is the least significant first.
    [[nodiscard]] Bytes ordered(Bytes number) const {
        if (isReversed) {
            std::reverse(number.begin(), number.end());
        }
        return number;
    }

    /// False, and nothing changes, when the stream would be too long.
    bool write(const Bytes& more) {
        const std::size_t end = std::size_t{position} + more.size();
        if (!more.empty() && end > 0xFFFFFFFF) {
            return false;
        }
        if (!more.empty()) {
            bytes.resize(std::max(bytes.size(), end));
            std::copy(more.begin(), more.end(), bytes.begin() + position);
            position = static_cast<unsigned int>(end);
        }
        return true;
    }

    std::optional<Bytes> read(std::size_t count) {
        if (count > 0 && position + count > bytes.size()) {
            return std::nullopt;
        }
        if (count == 0) {
            return Bytes();
        }
        const auto begin = bytes.begin() + position;
        position += static_cast<unsigned int>(count);
        return Bytes(begin, begin + static_cast<std::ptrdiff_t>(count));
    }
};

/// A stream, what it should be, and what the input chooses.
struct Turn {
    fuzz::Input& input;
    ByteStream real;
    StreamModel model;

    unsigned int number() { return fuzz::number(input); }
    Bytes some() { return input.ConsumeBytes<unsigned char>(number() % 300); }
};

std::string thrownText(const std::string& message, const char* unit, int line) {
    return "Base:\n\t" + message + "\n\t" + unit + " (" + std::to_string(line) +
           "): Thrown, GetLastError(): 0\n\nDataStreamIO\n";
}

/// Fails unless the operation throws what it should; nothing when `expected` is empty.
template <typename Operation>
void expectThrown(const std::string& expected, const Operation& operation) {
    std::string thrown;
    try {
        operation();
    } catch (const Util::Exception::DataStreamIO& failure) {
        thrown = failure.ToString().CStr();
    } catch (const std::bad_alloc&) {
        thrown = "no memory";
    }
    expectEqual("what is thrown", thrown, expected);
}

/// Writes what `operation` writes, which should be `bytes`, unless the stream would then fill the memory.
template <typename Operation>
void write(Turn& turn, const Bytes& bytes, const Operation& operation) {
    const std::size_t end = turn.model.position + bytes.size();
    if (end < 300000 || end > 0xFFFFFFFF || bytes.empty()) {
        expectThrown(turn.model.write(bytes) ? "" : "no memory", operation);
    }
}

/// The bytes of the low `width` bytes of `value`, as the stream stores them.
template <typename T>
Bytes stored(const StreamModel& model, const T& value, std::size_t width) {
    Bytes bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    bytes.resize(width);
    return model.ordered(bytes);
}

/// A value of T with the bits that are read; those above the stored ones continue the sign.
template <typename T>
T valueOf(const StreamModel& model, const Bytes& read) {
    Bytes bytes = model.ordered(read);
    const bool isNegative = std::is_signed_v<T> && (bytes.back() & 0x80) != 0;
    bytes.resize(sizeof(T), isNegative ? 0xFF : 0);
    T value{};
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

template <typename T>
void readNumber(Turn& turn, std::size_t width) {
    const std::string message = "Can't extract " + std::to_string(width) + " bytes at position " +
                                std::to_string(turn.model.position) + ", total size " +
                                std::to_string(turn.model.bytes.size());
    const std::optional<Bytes> bytes = turn.model.read(width);
    T value = static_cast<T>(77);
    const T expected = bytes ? valueOf<T>(turn.model, *bytes) : value;
    expectThrown(bytes ? "" : thrownText(message, "Util/ByteStream.h", 141), [&] {
        if (turn.input.ConsumeBool()) {
            value = turn.real.ReadPrimitive(T{});
        } else {
            turn.real >> value;
        }
    });
    expect("the bits of what is read", std::memcmp(&value, &expected, sizeof value) == 0);
}

template <typename T, std::size_t WIDTH = sizeof(T)>
void number(Turn& turn) {
    if (turn.input.ConsumeBool()) {
        readNumber<T>(turn, WIDTH);
        return;
    }
    Bytes bits = turn.input.ConsumeBytes<unsigned char>(sizeof(T));
    bits.resize(sizeof(T));
    T value{};
    std::memcpy(&value, bits.data(), sizeof value);
    write(turn, stored(turn.model, value, WIDTH), [&] { turn.real << value; });
}

void boolean(Turn& turn) {
    const bool value = turn.input.ConsumeBool();
    if (turn.input.ConsumeBool()) {
        write(turn, {static_cast<unsigned char>(value)}, [&] { turn.real << value; });
    } else if (const std::optional<Bytes> byte = turn.model.read(1)) {
        expectEqual("a bool", turn.real.ReadPrimitive(value), (*byte)[0] != 0);
    }
}

void writeBytes(Turn& turn) {
    const Bytes bytes = turn.some();
    const bool asVector = turn.input.ConsumeBool();
    write(turn, bytes, [&] {
        if (asVector) {
            turn.real << bytes;
        } else {
            turn.real.Write(static_cast<unsigned int>(bytes.size()), bytes.data());
        }
    });
}

void readBytes(Turn& turn) {
    Bytes bytes(turn.number() % 70000, 7);
    const bool asVector = turn.input.ConsumeBool();
    const Bytes expected = turn.model.read(bytes.size()).value_or(Bytes());
    const std::string message = "Can't read " + std::to_string(bytes.size()) + " bytes";
    const bool isThere = expected.size() == bytes.size();
    expectThrown(isThere ? "" : thrownText(message, "Util/ByteStream", asVector ? 104 : 123), [&] {
        if (asVector) {
            turn.real >> bytes;
        } else {
            turn.real.Read(static_cast<unsigned int>(bytes.size()), bytes.data());
        }
    });
    expect("the bytes that are read", bytes == (isThere ? expected : Bytes(bytes.size(), 7)));
}

void writeText(Turn& turn) {
    const Bytes bytes = turn.some();
    const String text = fuzz::stringOf(std::string(bytes.begin(), bytes.end()));
    Bytes expected;
    if (turn.model.hasLengths) {
        expected = stored(turn.model, static_cast<unsigned int>(bytes.size()), 4);
    }
    expected.insert(expected.end(), bytes.begin(), bytes.end());
    write(turn, expected, [&] { turn.real << text; });
}

/// What reading a text should throw, or nothing and the text.
std::string readTextModel(StreamModel& model, std::string& text) {
    const std::string where = std::to_string(model.position) + ", total size " + std::to_string(model.bytes.size());
    const std::optional<Bytes> prefix = model.read(4);
    if (!prefix) {
        return thrownText("Can't extract 4 bytes at position " + where, "Util/ByteStream.h", 141);
    }
    const auto length = valueOf<unsigned int>(model, *prefix);
    const std::string shown = std::to_string(length);
    if (length > 200000) {
        return thrownText("Improbable string length " + shown, "Util/ByteStream", 74);
    }
    const std::optional<Bytes> bytes = model.read(length);
    if (!bytes) {
        return thrownText("Can't read string of length " + shown, "Util/ByteStream", 81);
    }
    text.assign(bytes->begin(), std::find(bytes->begin(), bytes->end(), 0));
    return "";
}

void readText(Turn& turn) {
    String text("old");
    std::string expected;
    expectThrown(readTextModel(turn.model, expected), [&] { turn.real >> text; });
    expectEqual("a text", std::string(text.CStr(), text.Length()), expected);
}

void moveAbout(Turn& turn) {
    const unsigned int position = turn.number();
    if (turn.input.ConsumeBool()) {
        turn.real.SetPosition(position);
        turn.model.position = position;
    } else {
        const int count = turn.input.ConsumeIntegralInRange(-300, 300);
        turn.real.Skip(count);
        turn.model.position += static_cast<unsigned int>(count);
    }
}

/// A length in front of so many bytes that it is at the limit for texts.
void makeLongText(Turn& turn) {
    const auto length = turn.input.ConsumeIntegralInRange<unsigned int>(199999, 200001);
    Bytes bytes = stored(turn.model, length, 4);
    bytes.resize(4 + turn.input.ConsumeIntegralInRange<unsigned int>(199999, 200001), 'a');
    turn.real.Clear();
    turn.model.bytes.clear();
    turn.model.position = 0;
    write(turn, bytes, [&] { turn.real << bytes; });
    turn.real.SetPosition(0);
    turn.model.position = 0;
}

void set(Turn& turn) {
    const int endianType = turn.input.ConsumeIntegralInRange(-1, 3);
    turn.real.SetEndianType(static_cast<Util::DataStream::EndianType>(endianType));
    turn.model.isReversed = endianType != 0 && endianType != 1;
    turn.model.hasLengths = turn.input.ConsumeBool();
    turn.real.SetWriteStringLength(turn.model.hasLengths);
}

constexpr void (*OPERATIONS[])(Turn&) = {number<char>,
                                         number<signed char>,
                                         number<unsigned char>,
                                         number<short>,
                                         number<unsigned short>,
                                         number<int>,
                                         number<unsigned int>,
                                         number<long, 4>,
                                         number<unsigned long, 4>,
                                         number<long long>,
                                         number<unsigned long long>,
                                         number<float>,
                                         number<double>,
                                         boolean,
                                         writeBytes,
                                         readBytes,
                                         writeText,
                                         readText,
                                         moveAbout,
                                         moveAbout,
                                         set,
                                         makeLongText};

void check(Turn& turn) {
    ByteStream& real = turn.real;
    const StreamModel& model = turn.model;
    const auto size = static_cast<unsigned int>(model.bytes.size());
    expectEqual("the position", real.GetPosition(), model.position);
    expectEqual("the size", real.GetSize(), size);
    expectEqual("what remains", real.GetRemaining(), size - model.position);
    expectEqual("being at the end", real.AtEnd(), model.position >= size);
    Bytes all(size);
    real.SetPosition(0);
    real.Read(size, all.data());
    real.SetPosition(model.position);
    expect("the bytes of the stream", all == model.bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    fuzz::Input input(data, size);
    const Bytes first = input.ConsumeBytes<unsigned char>(input.ConsumeIntegral<unsigned char>());
    Turn turn{input, ByteStream(first), {first}};
    fuzz::trace().clear();
    while (input.remaining_bytes() > 0) {
        const auto operation = input.ConsumeIntegralInRange<std::size_t>(0, std::size(OPERATIONS) - 1);
        fuzz::trace() += " operation " + std::to_string(operation) + ",";
        OPERATIONS[operation](turn);
        check(turn);
    }
    return 0;
}
