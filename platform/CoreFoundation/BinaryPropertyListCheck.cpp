#include <cstdint>

#include "platform/CoreFoundation/PropertyListCheck.h"

namespace cv::plist {

namespace {

using Fault = Parsed::Fault;

constexpr std::size_t HEADER_SIZE = 8;
constexpr std::size_t TRAILER_SIZE = 32;

// An object may be referred to many times, and the tree holds a copy of it for each: what the tree may take in all.
constexpr std::uint64_t MAX_TREE_SIZE = 256U << 20;
constexpr std::uint64_t NODE_SIZE = 64;

class BinaryCheck {
public:
    explicit BinaryCheck(std::string_view bytes) : bytes_(bytes) {}

    Verdict run() {
        if (readTrailer()) {
            checkObject(rootIndex_, 0);
        }
        return verdict_;
    }

private:
    bool refuse(Fault fault, const char* reason) {
        verdict_ = {fault, reason};
        return false;
    }
    bool malformed(const char* reason) { return refuse(Fault::malformed, reason); }
    bool unsupported(const char* reason) { return refuse(Fault::unsupported, reason); }

    /// The byte at `position`, which the caller has checked to be inside.
    std::uint8_t byteAt(std::uint64_t position) const {
        return static_cast<std::uint8_t>(bytes_[static_cast<std::size_t>(position)]);
    }

    /// The bytes from `position`, which the caller has checked to be inside.
    std::string_view textAt(std::uint64_t position, std::uint64_t count) const {
        return bytes_.substr(static_cast<std::size_t>(position), static_cast<std::size_t>(count));
    }

    /// The big-endian number of `size` (1 to 8) bytes at `position`, which the caller has checked to be inside.
    std::uint64_t numberAt(std::uint64_t position, unsigned size) const {
        std::uint64_t value = 0;
        for (unsigned i = 0; i < size; ++i) {
            value = value << 8 | byteAt(position + i);
        }
        return value;
    }

    bool readTrailer() {
        if (bytes_.size() < HEADER_SIZE + 1 + TRAILER_SIZE) {
            return malformed("it is cut short");
        }
        const std::size_t trailer = bytes_.size() - TRAILER_SIZE;
        offsetSize_ = byteAt(trailer + 6);
        referenceSize_ = byteAt(trailer + 7);
        objectCount_ = numberAt(trailer + 8, 8);
        rootIndex_ = numberAt(trailer + 16, 8);
        table_ = numberAt(trailer + 24, 8);
        const bool good = offsetSize_ >= 1 && offsetSize_ <= 8 && referenceSize_ >= 1 && referenceSize_ <= 8 &&
                          table_ > HEADER_SIZE && table_ <= trailer && objectCount_ >= 1 &&
                          objectCount_ <= (trailer - table_) / offsetSize_ && rootIndex_ < objectCount_;
        return good || malformed("its trailer is damaged");
    }

    /// Whether `count` items of `size` bytes fit between `position` and the offset table.
    bool fits(std::uint64_t position, std::uint64_t count, unsigned size) {
        return (position <= table_ && count <= (table_ - position) / size) || malformed("an object does not fit");
    }

    bool spend(std::uint64_t size) {
        treeSize_ += NODE_SIZE + size;
        return treeSize_ <= MAX_TREE_SIZE || unsupported("it is too large");
    }

    bool checkObject(std::uint64_t index, unsigned depth) {
        if (index >= objectCount_) {
            return malformed("it refers to an object that it does not hold");
        }
        const std::uint64_t position = numberAt(table_ + index * offsetSize_, offsetSize_);
        if (position < HEADER_SIZE || position >= table_) {
            return malformed("an object lies outside");
        }
        const std::uint8_t marker = byteAt(position);
        return marker >= 0x40 && (marker & 0xF0U) != 0x80 ? checkCounted(marker, position + 1, depth)
                                                          : checkScalar(marker, position + 1);
    }

    bool checkScalar(std::uint8_t marker, std::uint64_t position) {
        const unsigned low = marker & 0x0FU;
        const unsigned size = (marker & 0xF0U) == 0x80 ? low + 1 : 1U << low;
        switch (marker) {
            case 0x08:
            case 0x09:
                return spend(0);
            case 0x14:
                return fits(position, 16, 1) && spend(0) &&
                       (numberAt(position, 8) == 0 || unsupported("it holds an integer of more than 64 bits"));
            case 0x10:
            case 0x11:
            case 0x12:
            case 0x13:
            case 0x22:
            case 0x23:
            case 0x33:
            case 0x80:
            case 0x81:
            case 0x83:
            case 0x87:
                return fits(position, size, 1) && spend(0);
            default:
                return malformed("it holds an object of an unknown kind");
        }
    }

    /// Reads the count that follows a marker, and moves `position` behind it.
    bool readCount(std::uint8_t marker, std::uint64_t& position, std::uint64_t& count) {
        count = marker & 0x0FU;
        if (count != 0x0F) {
            return true;
        }
        if (!fits(position, 1, 1) || byteAt(position) < 0x10 || byteAt(position) > 0x13) {
            return malformed("a count is damaged");
        }
        const unsigned size = 1U << (byteAt(position) & 0x0FU);
        if (!fits(position + 1, size, 1)) {
            return false;
        }
        count = numberAt(position + 1, size);
        position += 1 + size;
        return true;
    }

    bool checkCounted(std::uint8_t marker, std::uint64_t position, unsigned depth) {
        std::uint64_t count = 0;
        if (!readCount(marker, position, count)) {
            return false;
        }
        switch (marker & 0xF0U) {
            case 0x40:
                return fits(position, count, 1) && spend(count);
            case 0x50:
                return fits(position, count, 1) && spend(count) && checkAscii(textAt(position, count));
            case 0x60:
                return fits(position, count, 2) && spend(3 * count) && checkUtf16(position, count);
            case 0xA0:
                return fits(position, count, referenceSize_) && spend(0) && checkItems(position, count, depth);
            case 0xC0:
                return unsupported("it holds a set");
            case 0xD0:
                return fits(position, count, 2 * referenceSize_) && spend(0) && checkKeys(position, count) &&
                       checkItems(position, 2 * count, depth);
            default:
                return malformed("it holds an object of an unknown kind");
        }
    }

    bool checkAscii(std::string_view text) {
        for (const char c : text) {
            if (c == '\0') {
                return unsupported("it holds text with a NUL");
            }
            if (static_cast<unsigned char>(c) >= 0x80) {
                return malformed("a text is damaged");
            }
        }
        return true;
    }

    bool checkUtf16(std::uint64_t position, std::uint64_t count) {
        bool wantsTrail = false;
        for (std::uint64_t i = 0; i < count; ++i) {
            const std::uint64_t unit = numberAt(position + 2 * i, 2);
            const bool isTrail = (unit & 0xFC00U) == 0xDC00;
            if (isTrail != wantsTrail) {
                return unsupported("it holds text with half a surrogate pair");
            }
            if (unit == 0) {
                return unsupported("it holds text with a NUL");
            }
            wantsTrail = (unit & 0xFC00U) == 0xD800;
        }
        if (count == 0) {
            return unsupported("it holds empty text in an unusual form");
        }
        return !wantsTrail || unsupported("it holds text with half a surrogate pair");
    }

    bool checkItems(std::uint64_t position, std::uint64_t count, unsigned depth) {
        if (depth == MAX_DEPTH) {
            return unsupported("it is nested too deeply");
        }
        for (std::uint64_t i = 0; i < count; ++i) {
            if (!checkObject(numberAt(position + i * referenceSize_, referenceSize_), depth + 1)) {
                return false;
            }
        }
        return true;
    }

    bool checkKeys(std::uint64_t position, std::uint64_t count) {
        for (std::uint64_t i = 0; i < count; ++i) {
            const std::uint64_t index = numberAt(position + i * referenceSize_, referenceSize_);
            if (index >= objectCount_) {
                return malformed("it refers to an object that it does not hold");
            }
            const std::uint64_t object = numberAt(table_ + index * offsetSize_, offsetSize_);
            if (object >= table_ || ((byteAt(object) & 0xF0U) != 0x50 && (byteAt(object) & 0xF0U) != 0x60)) {
                return malformed("a key is no text");
            }
        }
        return true;
    }

    std::string_view bytes_;
    Verdict verdict_;
    unsigned offsetSize_ = 0;
    unsigned referenceSize_ = 0;
    std::uint64_t objectCount_ = 0;
    std::uint64_t rootIndex_ = 0;
    std::uint64_t table_ = 0;
    std::uint64_t treeSize_ = 0;
};

}  // namespace

Verdict checkBinary(std::string_view bytes) {
    return BinaryCheck(bytes).run();
}

}  // namespace cv::plist
