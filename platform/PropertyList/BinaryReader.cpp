#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "platform/PropertyList/Reading.h"
#include "platform/PropertyList/Utf.h"

namespace cv::plist {

namespace {

constexpr std::size_t HEADER_SIZE = 8;
constexpr std::size_t TRAILER_SIZE = 32;

class BinaryReader {
public:
    explicit BinaryReader(std::string_view bytes) : bytes_(bytes) {}

    Value run() {
        readTrailer();
        return readObject(rootNumber_, 0);
    }

private:
    /// What lies behind a marker: `count` bytes, units, items or entries from `position`.
    struct Content {
        std::uint64_t position;
        std::uint64_t count;
    };

    /// The byte at `position`, which the caller has checked to be inside.
    std::uint8_t byteAt(std::uint64_t position) const {
        return static_cast<std::uint8_t>(bytes_[static_cast<std::size_t>(position)]);
    }

    /// The big-endian number of `size` (1 to 8) bytes at `position`, which the caller has checked to be inside.
    std::uint64_t numberAt(std::uint64_t position, unsigned size) const {
        std::uint64_t value = 0;
        for (unsigned i = 0; i < size; ++i) {
            value = value << 8 | byteAt(position + i);
        }
        return value;
    }

    void readTrailer() {
        if (bytes_.size() < HEADER_SIZE + 1 + TRAILER_SIZE) {
            refuseMalformed("it is cut short");
        }
        const std::size_t trailer = bytes_.size() - TRAILER_SIZE;
        offsetSize_ = byteAt(trailer + 6);
        referenceSize_ = byteAt(trailer + 7);
        objectCount_ = numberAt(trailer + 8, 8);
        rootNumber_ = numberAt(trailer + 16, 8);
        table_ = numberAt(trailer + 24, 8);
        const bool isGood = offsetSize_ >= 1 && offsetSize_ <= 8 && referenceSize_ >= 1 && referenceSize_ <= 8 &&
                            table_ > HEADER_SIZE && table_ <= trailer && objectCount_ >= 1 &&
                            objectCount_ <= (trailer - table_) / offsetSize_ && rootNumber_ < objectCount_;
        if (!isGood) {
            refuseMalformed("its trailer is damaged");
        }
    }

    /// Refuses the file unless `count` items of `size` bytes fit between `position` and the offset table.
    void needRoom(std::uint64_t position, std::uint64_t count, unsigned size) const {
        if (position > table_ || count > (table_ - position) / size) {
            refuseMalformed("an object does not fit in the file");
        }
    }

    /// Where the object lies whose number is at `position`.
    std::uint64_t referredFrom(std::uint64_t position) const { return positionOf(numberAt(position, referenceSize_)); }

    std::uint64_t positionOf(std::uint64_t number) const {
        if (number >= objectCount_) {
            refuseMalformed("it refers to an object that it does not hold");
        }
        const std::uint64_t position = numberAt(table_ + number * offsetSize_, offsetSize_);
        if (position < HEADER_SIZE || position >= table_) {
            refuseMalformed("an object's position is out of range");
        }
        return position;
    }

    Value readObject(std::uint64_t number, unsigned depth) { return readAt(positionOf(number), depth); }

    Value readAt(std::uint64_t position, unsigned depth) {
        budget_.addValue();
        const std::uint8_t marker = byteAt(position++);
        switch (marker & 0xF0U) {
            case 0x00:
                return {readBoolean(marker)};
            case 0x10:
                return {readInteger(marker, position)};
            case 0x20:
                return {readReal(marker, position)};
            case 0x30:
                return {readDate(marker, position)};
            case 0x40:
                return {Data{readBytes(readContent(marker, position, 1))}};
            case 0x50:
            case 0x60:
                return {readText(marker, position)};
            case 0x80:
                return {readUid(marker, position)};
            case 0xA0:
                return {readArray(readContent(marker, position, referenceSize_), depth)};
            case 0xB0:
            case 0xC0:
                refuseUnsupported("it holds a set");
            case 0xD0:
                return {readDictionary(readContent(marker, position, 2 * referenceSize_), depth)};
            default:
                refuseUnknown();
        }
    }

    [[noreturn]] static void refuseUnknown() { refuseMalformed("it holds an object of an unknown kind"); }

    static bool readBoolean(std::uint8_t marker) {
        if (marker == 0x00) {
            refuseUnsupported("it holds a null");
        }
        if (marker != 0x08 && marker != 0x09) {
            refuseUnknown();
        }
        return marker == 0x09;
    }

    /// Integers of up to four bytes are positive; those of eight, and of sixteen, are signed.
    Integer readInteger(std::uint8_t marker, std::uint64_t position) const {
        constexpr std::uint64_t SIGN = std::uint64_t{1} << 63;
        if (marker > 0x14) {
            refuseUnknown();
        }
        const unsigned size = 1U << (marker & 0x0FU);
        needRoom(position, size, 1);
        if (size <= 8) {
            const std::uint64_t bits = numberAt(position, size);
            return {bits, size == 8 && (bits & SIGN) != 0};
        }
        const std::uint64_t high = numberAt(position, 8);
        const std::uint64_t bits = numberAt(position + 8, 8);
        const bool isNegative = high == ~std::uint64_t{0} && (bits & SIGN) != 0;
        if (high != 0 && !isNegative) {
            refuseUnsupported("it holds an integer of more than 64 bits");
        }
        return {bits, isNegative};
    }

    template <typename Number, typename Bits>
    Number readFloating(std::uint64_t position) const {
        static_assert(sizeof(Number) == sizeof(Bits));
        needRoom(position, sizeof(Bits), 1);
        const auto bits = static_cast<Bits>(numberAt(position, sizeof(Bits)));
        Number number = 0;
        std::memcpy(&number, &bits, sizeof number);
        return number;
    }

    Real readReal(std::uint8_t marker, std::uint64_t position) const {
        if (marker != 0x22 && marker != 0x23) {
            refuseUnknown();
        }
        const bool isSingle = marker == 0x22;
        return {isSingle ? readFloating<float, std::uint32_t>(position) : readFloating<double, std::uint64_t>(position),
                isSingle};
    }

    Date readDate(std::uint8_t marker, std::uint64_t position) const {
        if (marker != 0x33) {
            refuseUnknown();
        }
        return {readFloating<double, std::uint64_t>(position)};
    }

    Uid readUid(std::uint8_t marker, std::uint64_t position) const {
        const unsigned size = (marker & 0x0FU) + 1;
        needRoom(position, size, 1);
        if (size > 8) {
            refuseUnsupported("it holds a UID of more than 64 bits");
        }
        return {numberAt(position, size)};
    }

    /// Reads the count behind a marker, of items of `size` bytes, which all lie inside.
    Content readContent(std::uint8_t marker, std::uint64_t position, unsigned size) const {
        Content content{position, marker & 0x0FU};
        if (content.count == 0x0F) {
            needRoom(position, 1, 1);
            const std::uint8_t countMarker = byteAt(position);
            if (countMarker < 0x10 || countMarker > 0x13) {
                refuseMalformed("a count is damaged");
            }
            const unsigned countSize = 1U << (countMarker & 0x0FU);
            needRoom(position + 1, countSize, 1);
            content = {position + 1 + countSize, numberAt(position + 1, countSize)};
        }
        needRoom(content.position, content.count, size);
        return content;
    }

    std::string readBytes(const Content& content) {
        const auto count = static_cast<std::size_t>(content.count);
        budget_.addBytes(count);
        return std::string(bytes_.substr(static_cast<std::size_t>(content.position), count));
    }

    std::string readText(std::uint8_t marker, std::uint64_t position) {
        if ((marker & 0xF0U) == 0x60) {
            return readUtf16(readContent(marker, position, 2));
        }
        std::string text = readBytes(readContent(marker, position, 1));
        if (std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; })) {
            refuseMalformed("a text is damaged");
        }
        return text;
    }

    std::string readUtf16(const Content& content) {
        std::size_t size = 0;
        forEachCharacter(content, [&](char32_t character) { size += utf8Size(character); });
        budget_.addBytes(size);
        std::string text;
        text.reserve(size);
        forEachCharacter(content, [&](char32_t character) { appendUtf8(text, character); });
        return text;
    }

    template <typename Visit>
    void forEachCharacter(const Content& content, Visit visit) const {
        const std::uint64_t end = content.position + 2 * content.count;
        for (std::uint64_t position = content.position; position < end; position += 2) {
            auto character = static_cast<char32_t>(numberAt(position, 2));
            if (isLeadSurrogate(character) && position + 2 < end) {
                const auto trail = static_cast<char32_t>(numberAt(position + 2, 2));
                if (isTrailSurrogate(trail)) {
                    position += 2;
                    character = 0x10000 + ((character & 0x3FF) << 10 | (trail & 0x3FF));
                }
            }
            if (isLeadSurrogate(character) || isTrailSurrogate(character)) {
                refuseUnsupported("it holds text with an unpaired surrogate");
            }
            visit(character);
        }
    }

    static void checkDepth(unsigned depth) {
        if (depth == MAX_DEPTH) {
            refuseUnsupported("it is nested too deeply");
        }
    }

    Array readArray(const Content& content, unsigned depth) {
        checkDepth(depth);
        Array items;
        budget_.makeRoom(items, static_cast<std::size_t>(content.count));
        for (std::uint64_t i = 0; i < content.count; ++i) {
            items.push_back(readAt(referredFrom(content.position + i * referenceSize_), depth + 1));
        }
        return items;
    }

    /// The references to all keys come before those to the values.
    Dictionary readDictionary(const Content& content, unsigned depth) {
        checkDepth(depth);
        Dictionary entries;
        for (std::uint64_t i = 0; i < content.count; ++i) {
            const std::uint64_t reference = content.position + i * referenceSize_;
            std::string key = readKey(referredFrom(reference));
            Value value = readAt(referredFrom(reference + content.count * referenceSize_), depth + 1);
            budget_.addEntry(entries, std::move(key), std::move(value));
        }
        return entries;
    }

    std::string readKey(std::uint64_t position) {
        const std::uint8_t marker = byteAt(position);
        if ((marker & 0xF0U) != 0x50 && (marker & 0xF0U) != 0x60) {
            refuseMalformed("a key is not text");
        }
        return readText(marker, position + 1);
    }

    std::string_view bytes_;
    Budget budget_;
    unsigned offsetSize_ = 0;
    unsigned referenceSize_ = 0;
    std::uint64_t objectCount_ = 0;
    std::uint64_t rootNumber_ = 0;
    std::uint64_t table_ = 0;  ///< where the table of the objects' positions begins
};

}  // namespace

Value readBinary(std::string_view bytes) {
    return BinaryReader(bytes).run();
}

}  // namespace cv::plist
