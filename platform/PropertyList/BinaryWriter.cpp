#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <set>
#include <stdexcept>
#include <vector>

#include "platform/PropertyList/PropertyList.h"
#include "platform/PropertyList/Utf.h"

namespace cv::plist {

namespace {

constexpr std::string_view HEADER = "bplist00";

/// The smallest of 1, 2, 4 and 8 bytes that hold the number.
unsigned sizeFor(std::uint64_t number) {
    return number <= 0xFF ? 1 : number <= 0xFFFF ? 2 : number <= 0xFFFFFFFF ? 4 : 8;
}

/// The size as its power of two, which is how markers tell it.
unsigned powerOf(unsigned size) {
    return size == 1 ? 0 : size == 2 ? 1 : size == 4 ? 2 : 3;
}

/// Writes every array and dictionary as an object of its own, and equal values of the other kinds as one object.
class BinaryWriter {
public:
    std::string run(const Value& root) {
        add(root, 0);
        referenceSize_ = sizeFor(objects_.size() - 1);
        for (const Container& container : containers_) {
            writeContainer(container);
        }
        writeTable();
        return std::move(bytes_);
    }

private:
    /// Where an object's bytes are.
    struct Extent {
        std::size_t position;
        std::size_t size;
    };

    /// An array or a dictionary: the numbers of its items, or of its keys and then its values.
    struct Container {
        std::size_t number;
        unsigned char marker;
        std::size_t count;
        std::size_t firstReference;
        std::size_t references;
    };

    /// Orders objects by their bytes.
    struct ByBytes {
        const BinaryWriter* writer;
        bool operator()(std::size_t left, std::size_t right) const {
            return writer->bytesOf(left) < writer->bytesOf(right);
        }
    };

    std::string_view bytesOf(std::size_t number) const {
        return std::string_view(bytes_).substr(objects_[number].position, objects_[number].size);
    }

    void put(unsigned char byte) { bytes_ += static_cast<char>(byte); }

    void putNumber(std::uint64_t number, unsigned size) {
        while (size-- > 0) {
            put(static_cast<unsigned char>(number >> 8 * size & 0xFF));
        }
    }

    template <typename Bits, typename Number>
    void putFloating(unsigned char marker, Number number) {
        static_assert(sizeof(Bits) == sizeof(Number));
        Bits bits = 0;
        std::memcpy(&bits, &number, sizeof bits);
        put(marker);
        putNumber(bits, sizeof bits);
    }

    void putCount(unsigned char marker, std::uint64_t count) {
        constexpr unsigned char MANY = 0x0F;
        if (count < MANY) {
            put(static_cast<unsigned char>(marker | count));
        } else {
            put(marker | MANY);
            putInteger({count, false});
        }
    }

    void putInteger(Integer integer) {
        constexpr std::uint64_t MAX_SIGNED = std::numeric_limits<std::int64_t>::max();
        if (!integer.isNegative && integer.bits > MAX_SIGNED) {
            put(0x14);
            putNumber(0, 8);
            putNumber(integer.bits, 8);
        } else {
            const unsigned size = integer.isNegative ? 8 : sizeFor(integer.bits);
            put(static_cast<unsigned char>(0x10 | powerOf(size)));
            putNumber(integer.bits, size);
        }
    }

    /// In 32 bits only when that is the same number.
    void putReal(Real real) {
        const bool isInRange = !(std::abs(real.value) > static_cast<double>(FLT_MAX)) || std::isinf(real.value);
        const float single = real.isSingle && isInRange ? static_cast<float>(real.value) : 0;
        const bool isSame = std::isnan(real.value) || static_cast<double>(single) == real.value;
        if (real.isSingle && isInRange && isSame) {
            putFloating<std::uint32_t>(0x22, single);
        } else {
            putFloating<std::uint64_t>(0x23, real.value);
        }
    }

    void putText(const std::string& text) {
        std::size_t units = 0;
        bool isAscii = true;
        for (std::size_t position = 0; position < text.size();) {
            const char32_t character = nextCharacter(text, position);
            if (character == NO_CHARACTER) {
                throw std::invalid_argument("a text in it is not UTF-8");
            }
            isAscii = isAscii && character < 0x80;
            units += character < 0x10000 ? 1 : 2;
        }
        putCount(isAscii ? 0x50 : 0x60, units);
        if (isAscii) {
            bytes_ += text;
        } else {
            putUtf16(text);
        }
    }

    void putUtf16(const std::string& text) {
        for (std::size_t position = 0; position < text.size();) {
            const char32_t character = nextCharacter(text, position);
            if (character < 0x10000) {
                putNumber(character, 2);
            } else {
                putNumber(0xD800 + ((character - 0x10000) >> 10), 2);
                putNumber(0xDC00 + (character & 0x3FF), 2);
            }
        }
    }

    void putScalar(const Value& value) {
        if (const auto* text = std::get_if<std::string>(&value.content)) {
            putText(*text);
        } else if (const auto* data = std::get_if<Data>(&value.content)) {
            putCount(0x40, data->bytes.size());
            bytes_ += data->bytes;
        } else if (const auto* integer = std::get_if<Integer>(&value.content)) {
            putInteger(*integer);
        } else if (const auto* real = std::get_if<Real>(&value.content)) {
            putReal(*real);
        } else if (const auto* date = std::get_if<Date>(&value.content)) {
            putFloating<std::uint64_t>(0x33, date->seconds);
        } else if (const auto* uid = std::get_if<Uid>(&value.content)) {
            const unsigned size = sizeFor(uid->number);
            put(static_cast<unsigned char>(0x80 | (size - 1)));
            putNumber(uid->number, size);
        } else {
            put(std::get<bool>(value.content) ? 0x09 : 0x08);
        }
    }

    /// The number of the object that `putObject` puts at the end of the bytes, or of an equal one before it.
    template <typename PutObject>
    std::size_t addOnce(PutObject putObject) {
        const std::size_t position = bytes_.size();
        putObject();
        objects_.push_back({position, bytes_.size() - position});
        const auto [found, isNew] = scalars_.insert(objects_.size() - 1);
        if (!isNew) {
            objects_.pop_back();
            bytes_.resize(position);
        }
        return *found;
    }

    /// The number of the value's object, in a tree's usual order: an array or a dictionary comes before what it holds.
    std::size_t add(const Value& value, unsigned depth) {
        const auto* array = std::get_if<Array>(&value.content);
        const Dictionary* dictionary = value.dictionary();
        if (array == nullptr && dictionary == nullptr) {
            return addOnce([&] { putScalar(value); });
        }
        if (depth == MAX_DEPTH) {
            throw std::length_error("it is nested too deeply");
        }
        return array != nullptr ? addArray(*array, depth) : addDictionary(*dictionary, depth);
    }

    /// An array or a dictionary without its items, whose numbers go to `references_` from the container's place on.
    Container addContainer(unsigned char marker, std::size_t count, std::size_t references) {
        const Container container{objects_.size(), marker, count, references_.size(), references};
        objects_.push_back({});
        containers_.push_back(container);
        references_.resize(references_.size() + references);
        return container;
    }

    std::size_t addArray(const Array& items, unsigned depth) {
        const Container container = addContainer(0xA0, items.size(), items.size());
        std::size_t next = container.firstReference;
        for (const Value& item : items) {
            const std::size_t number = add(item, depth + 1);
            references_[next++] = number;
        }
        return container.number;
    }

    std::size_t addDictionary(const Dictionary& entries, unsigned depth) {
        const Container container = addContainer(0xD0, entries.size(), 2 * entries.size());
        std::size_t next = container.firstReference;
        for (const auto& entry : entries) {
            references_[next++] = addOnce([&] { putText(entry.first); });
        }
        for (const auto& entry : entries) {
            const std::size_t number = add(entry.second, depth + 1);
            references_[next++] = number;
        }
        return container.number;
    }

    void writeContainer(const Container& container) {
        objects_[container.number].position = bytes_.size();
        putCount(container.marker, container.count);
        for (std::size_t i = 0; i < container.references; ++i) {
            putNumber(references_[container.firstReference + i], referenceSize_);
        }
    }

    void writeTable() {
        const std::size_t table = bytes_.size();
        const unsigned offsetSize = sizeFor(table);
        for (const Extent& object : objects_) {
            putNumber(object.position, offsetSize);
        }
        bytes_.append(6, '\0');
        put(static_cast<unsigned char>(offsetSize));
        put(static_cast<unsigned char>(referenceSize_));
        putNumber(objects_.size(), 8);
        putNumber(0, 8);
        putNumber(table, 8);
    }

    std::string bytes_{HEADER};
    std::vector<Extent> objects_;  ///< by number; those of arrays and dictionaries are known at the end
    std::set<std::size_t, ByBytes> scalars_{ByBytes{this}};
    std::vector<Container> containers_;
    std::vector<std::size_t> references_;
    unsigned referenceSize_ = 0;
};

}  // namespace

std::string toBinary(const Value& root) {
    return BinaryWriter().run(root);
}

}  // namespace cv::plist
