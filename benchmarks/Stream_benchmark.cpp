// Values, texts and blocks of bytes written to memory, most significant byte first, and read back.

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "CvBase/Util/ByteStream.h"
#include "CvBase/common/common_string.h"
#include "benchmarks/support/Buffers.h"
#include "benchmarks/support/Main.h"

#if CV_PEER_BOOST
#include <boost/endian/conversion.hpp>
#endif
#if CV_PEER_QT
#include <QBuffer>
#include <QByteArray>
#include <QDataStream>
#include <QString>
#endif

namespace {

using bench::add;
using bench::addAnswering;
using Byte = unsigned char;
using Bytes = std::vector<Byte>;

constexpr unsigned int RECORDS = 125000;
constexpr unsigned int RECORD_SIZE = 32;
constexpr unsigned int TEXTS = 100000;
constexpr unsigned int TEXT_LENGTH = 20;
constexpr unsigned int BLOCK_SIZE = 64 * 1024;
constexpr unsigned int BLOCKS = 64;
constexpr unsigned int GROWN_BLOCK_SIZE = 4096;
constexpr unsigned int GROWN_SIZE = 64 * 1024 * 1024;

/// Eight values of different types: RECORDS of these are a million values.
struct Record {
    bool flag;
    unsigned char byte;
    short small;
    int number;
    unsigned int positive;
    long long large;
    float single;
    double real;
};

Record makeRecord(unsigned int i) {
    return {i % 3 == 0,
            static_cast<unsigned char>(i + 1),
            static_cast<short>(i * 7),
            static_cast<int>(i * 2654435761U),
            i + 0x01020304U,
            static_cast<long long>(i) * -0x123456789LL,
            static_cast<float>(i) + 0.5F,
            static_cast<double>(i) / 3};
}

/// A number made of all values of a record, with what came before.
std::uint64_t mixed(std::uint64_t before, const Record& record) {
    std::uint64_t values = static_cast<std::uint64_t>(record.number) ^ static_cast<std::uint64_t>(record.large);
    values += record.flag + record.byte + static_cast<std::uint64_t>(record.small) + record.positive;
    return before + values + static_cast<std::uint64_t>(record.single + record.real);
}

const std::vector<Record>& records() {
    static const std::vector<Record> made = [] {
        std::vector<Record> all;
        for (unsigned int i = 0; i < RECORDS; ++i) {
            all.push_back(makeRecord(i));
        }
        return all;
    }();
    return made;
}

std::uint64_t recordsMixed() {
    std::uint64_t total = 0;
    for (const Record& record : records()) {
        total = mixed(total, record);
    }
    return total;
}

template <typename Stream>
void writeRecords(Stream& stream) {
    for (const Record& record : records()) {
        stream << record.flag << record.byte << record.small << record.number << record.positive << record.large
               << record.single << record.real;
    }
}

template <typename Stream>
std::uint64_t readRecords(Stream& stream) {
    std::uint64_t total = 0;
    for (unsigned int i = 0; i < RECORDS; ++i) {
        Record record;
        stream >> record.flag >> record.byte >> record.small >> record.number >> record.positive >> record.large >>
            record.single >> record.real;
        total = mixed(total, record);
    }
    return total;
}

/// A stream that has room for everything from the start, most significant byte first. What is measured uses it through
/// its base class and does not make it anew: page faults would cost more than the rest.
std::shared_ptr<Util::ByteStream> makeStream(unsigned int size) {
    const auto stream = std::make_shared<Util::ByteStream>(size);
    stream->SetEndianType(static_cast<Util::DataStream::EndianType>(2));
    return stream;
}

void addValues() {
    const auto stream = makeStream(RECORDS * RECORD_SIZE);
    const std::uint64_t written = std::uint64_t{RECORDS} * RECORD_SIZE;
    addAnswering(
        "Stream/write-1000000-values", "CvBase",
        [stream] {
            stream->Clear();
            Util::DataStream& base = *stream;
            writeRecords(base);
            return base.GetSize();
        },
        written);
    const auto filled = makeStream(RECORDS * RECORD_SIZE);
    writeRecords<Util::DataStream>(*filled);
    addAnswering(
        "Stream/read-1000000-values", "CvBase",
        [filled] {
            filled->SetPosition(0);
            Util::DataStream& base = *filled;
            return readRecords(base);
        },
        recordsMixed());
}

void addTexts() {
    const std::string work = "Stream/100000-texts-there-and-back";
    const auto stream = makeStream(TEXTS * (TEXT_LENGTH + 4));
    addAnswering(
        work, "CvBase",
        [stream, text = String(std::string(TEXT_LENGTH, 'x').c_str())] {
            stream->Clear();
            Util::DataStream& base = *stream;
            for (unsigned int i = 0; i < TEXTS; ++i) {
                base << text;
            }
            base.SetPosition(0);
            std::uint64_t total = 0;
            for (unsigned int i = 0; i < TEXTS; ++i) {
                String read;
                base >> read;
                total += read.Length();
            }
            return total;
        },
        std::uint64_t{TEXTS} * TEXT_LENGTH);
}

void copyBlocks(Byte* dst, const Byte* src) {
    for (unsigned int i = 0; i < BLOCKS; ++i) {
        std::memcpy(dst + i * BLOCK_SIZE, src + i * BLOCK_SIZE, BLOCK_SIZE);
    }
}

void addBlocks() {
    const std::uint64_t size = std::uint64_t{BLOCKS} * BLOCK_SIZE;
    const Byte* const source = bench::source<Byte>(bench::IN_MEMORY);
    const auto stream = makeStream(static_cast<unsigned int>(size));
    add("Stream/write-blocks", {"CvBase",
                                [stream, source] {
                                    stream->Clear();
                                    Util::DataStream& base = *stream;
                                    for (unsigned int i = 0; i < BLOCKS; ++i) {
                                        base.Write(BLOCK_SIZE, source + i * BLOCK_SIZE);
                                    }
                                },
                                [stream, source, size] {
                                    Bytes written(size);
                                    stream->SetPosition(0);
                                    stream->Read(static_cast<unsigned int>(size), written.data());
                                    return std::memcmp(written.data(), source, size) == 0;
                                }});
    const auto memory = std::make_shared<Bytes>(size);
    const auto copied = [memory, source, size] { return std::memcmp(memory->data(), source, size) == 0; };
    add("Stream/write-blocks", {"memcpy", [memory, source] { copyBlocks(memory->data(), source); }, copied});

    const auto filled = makeStream(static_cast<unsigned int>(size));
    filled->Write(static_cast<unsigned int>(size), source);
    add("Stream/read-blocks", {"CvBase",
                               [filled, memory] {
                                   filled->SetPosition(0);
                                   Util::DataStream& base = *filled;
                                   for (unsigned int i = 0; i < BLOCKS; ++i) {
                                       base.Read(BLOCK_SIZE, memory->data() + i * BLOCK_SIZE);
                                   }
                               },
                               copied});
    // Out of a vector too: the C library's copy is many times slower where one side is aligned to a page and the other
    // is not.
    const auto vector = std::make_shared<Bytes>(source, source + size);
    add("Stream/read-blocks", {"memcpy", [memory, vector] { copyBlocks(memory->data(), vector->data()); }, copied});
}

/// Writes GROWN_SIZE bytes as one block over and over. The block is out of a vector, as in reading.
template <typename Write>
void writeGrowing(Write write) {
    static const Bytes block(bench::source<Byte>(bench::IN_CACHE),
                             bench::source<Byte>(bench::IN_CACHE) + GROWN_BLOCK_SIZE);
    for (unsigned int written = 0; written < GROWN_SIZE; written += GROWN_BLOCK_SIZE) {
        write(block.data());
    }
}

void addGrowing() {
    addAnswering(
        "Stream/grow-to-64-MiB", "CvBase",
        [] {
            Util::ByteStream stream(0);
            Util::DataStream& base = stream;
            writeGrowing([&base](const Byte* block) { base.Write(GROWN_BLOCK_SIZE, block); });
            return base.GetSize();
        },
        GROWN_SIZE);
}

#if CV_PEER_BOOST

template <typename T>
void append(Bytes& bytes, T value) {
    const std::size_t size = bytes.size();
    bytes.resize(size + sizeof value);
    boost::endian::endian_store<T, sizeof value, boost::endian::order::big>(bytes.data() + size, value);
}

template <typename T>
T take(const Byte*& from) {
    const T value = boost::endian::endian_load<T, sizeof(T), boost::endian::order::big>(from);
    from += sizeof(T);
    return value;
}

void appendRecord(Bytes& bytes, const Record& record) {
    append<unsigned char>(bytes, record.flag);
    append(bytes, record.byte);
    append(bytes, record.small);
    append(bytes, record.number);
    append(bytes, record.positive);
    append(bytes, record.large);
    append(bytes, record.single);
    append(bytes, record.real);
}

Record takeRecord(const Byte*& from) {
    Record record;
    record.flag = take<unsigned char>(from) != 0;
    record.byte = take<unsigned char>(from);
    record.small = take<short>(from);
    record.number = take<int>(from);
    record.positive = take<unsigned int>(from);
    record.large = take<long long>(from);
    record.single = take<float>(from);
    record.real = take<double>(from);
    return record;
}

void addBoost() {
    const auto bytes = std::make_shared<Bytes>();
    bytes->reserve(std::size_t{RECORDS} * RECORD_SIZE);
    const auto write = [bytes] {
        bytes->clear();
        for (const Record& record : records()) {
            appendRecord(*bytes, record);
        }
        return bytes->size();
    };
    addAnswering("Stream/write-1000000-values", "Boost.Endian", write, std::uint64_t{RECORDS} * RECORD_SIZE);
    addAnswering(
        "Stream/read-1000000-values", "Boost.Endian",
        [bytes, write] {
            if (bytes->empty()) {
                write();
            }
            const Byte* from = bytes->data();
            std::uint64_t total = 0;
            for (unsigned int i = 0; i < RECORDS; ++i) {
                total = mixed(total, takeRecord(from));
            }
            return total;
        },
        recordsMixed());
}

#endif

#if CV_PEER_QT

/// QDataStream over memory that is there from the start. Its version of Qt 4.5 writes a float in 4 bytes and a double
/// in 8.
struct QtStream {
    explicit QtStream(unsigned int size) {
        memory.buffer().reserve(static_cast<int>(size));
        memory.open(QIODevice::ReadWrite);
        stream.setDevice(&memory);
        stream.setVersion(QDataStream::Qt_4_5);
    }
    QBuffer memory;
    QDataStream stream;
};

template <typename Text>
void addQtTexts(const std::string& name, const Text& text) {
    const auto qt = std::make_shared<QtStream>(TEXTS * (2 * TEXT_LENGTH + 4));
    addAnswering(
        "Stream/100000-texts-there-and-back", name,
        [qt, text] {
            qt->memory.seek(0);
            for (unsigned int i = 0; i < TEXTS; ++i) {
                qt->stream << text;
            }
            qt->memory.seek(0);
            std::uint64_t total = 0;
            for (unsigned int i = 0; i < TEXTS; ++i) {
                Text read;
                qt->stream >> read;
                total += static_cast<std::uint64_t>(read.size());
            }
            return total;
        },
        std::uint64_t{TEXTS} * TEXT_LENGTH);
}

void addQt() {
    const auto qt = std::make_shared<QtStream>(RECORDS * RECORD_SIZE);
    const auto write = [qt] {
        qt->memory.seek(0);
        writeRecords(qt->stream);
        return static_cast<std::uint64_t>(qt->memory.pos());
    };
    addAnswering("Stream/write-1000000-values", "QDataStream", write, std::uint64_t{RECORDS} * RECORD_SIZE);
    addAnswering(
        "Stream/read-1000000-values", "QDataStream",
        [qt, write] {
            if (qt->memory.size() == 0) {
                write();
            }
            qt->memory.seek(0);
            return readRecords(qt->stream);
        },
        recordsMixed());
    addAnswering(
        "Stream/grow-to-64-MiB", "QDataStream",
        [] {
            QtStream growing(0);
            writeGrowing([&growing](const Byte* block) {
                growing.stream.writeRawData(reinterpret_cast<const char*>(block), GROWN_BLOCK_SIZE);
            });
            return static_cast<std::uint64_t>(growing.memory.size());
        },
        GROWN_SIZE);
    addQtTexts("QDataStream (QString)", QString(TEXT_LENGTH, 'x'));
    addQtTexts("QDataStream (QByteArray)", QByteArray(TEXT_LENGTH, 'x'));
}

#endif

[[maybe_unused]] const bool added = [] {
    addValues();
    addTexts();
    addBlocks();
    addGrowing();
#if CV_PEER_BOOST
    addBoost();
#endif
#if CV_PEER_QT
    addQt();
#endif
    return true;
}();

}  // namespace
