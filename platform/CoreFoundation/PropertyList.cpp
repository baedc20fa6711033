#include "platform/CoreFoundation/PropertyList.h"

#include <clocale>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

#include "platform/CoreFoundation/PropertyListCheck.h"

namespace cv::plist {

namespace {

constexpr std::string_view BINARY_MAGIC = "bplist00";
constexpr std::uint64_t MAX_SIGNED = std::numeric_limits<std::int64_t>::max();

/// libplist reads numbers in XML by the thread's locale; property lists always write them in the C locale's way.
class NumericLocaleC {
public:
    NumericLocaleC() : c_(newlocale(LC_NUMERIC_MASK, "C", nullptr)), before_(uselocale(c_)) {}
    ~NumericLocaleC() {
        uselocale(before_);
        if (c_ != nullptr) {
            freelocale(c_);
        }
    }
    NumericLocaleC(const NumericLocaleC&) = delete;
    NumericLocaleC& operator=(const NumericLocaleC&) = delete;

private:
    locale_t c_;
    locale_t before_;
};

std::string bigEndian(std::uint64_t value) {
    std::string bytes(8, '\0');
    for (std::size_t i = 8; i-- > 0; value >>= 8) {
        bytes[i] = static_cast<char>(value & 0xFF);
    }
    return bytes;
}

/// A tree with one object, from its binary form: the only way to a node of every value.
Tree fromObject(char marker, const std::string& value) {
    const std::string object = marker + value;
    const std::string trailer = std::string(6, '\0') + "\x01\x01" + bigEndian(1) + bigEndian(0);
    const std::string bytes =
        std::string(BINARY_MAGIC) + object + '\x08' + trailer + bigEndian(BINARY_MAGIC.size() + object.size());
    plist_t node = nullptr;
    plist_from_bin(bytes.data(), static_cast<uint32_t>(bytes.size()), &node);
    if (node == nullptr) {
        throw std::bad_alloc();
    }
    return Tree(node);
}

/// The binary form of one object: its marker byte, and the value in the bytes behind it.
struct Object {
    unsigned char marker;
    std::uint64_t value;
};

Object objectOf(plist_t node) {
    const Tree copy(plist_copy(node));
    const std::string bytes = toBinary(copy.get());
    Object object{static_cast<unsigned char>(bytes.at(BINARY_MAGIC.size())), 0};
    for (std::size_t i = 0, size = std::size_t{1} << (object.marker & 0x0FU); i < size; ++i) {
        object.value = object.value << 8 | static_cast<unsigned char>(bytes.at(BINARY_MAGIC.size() + 1 + i));
    }
    return object;
}

}  // namespace

Parsed parse(std::string_view bytes) {
    const bool isBinary = bytes.substr(0, BINARY_MAGIC.size()) == BINARY_MAGIC;
    Verdict verdict{Parsed::Fault::unsupported, "it is too large"};
    if (bytes.size() <= MAX_FILE_SIZE) {
        verdict = isBinary ? checkBinary(bytes) : checkXml(bytes);
    }
    Parsed parsed{nullptr, verdict.fault, verdict.reason};
    if (verdict.fault != Parsed::Fault::none) {
        return parsed;
    }
    const NumericLocaleC locale;
    plist_t root = nullptr;
    if (isBinary) {
        plist_from_bin(bytes.data(), static_cast<uint32_t>(bytes.size()), &root);
    } else {
        plist_from_xml(bytes.data(), static_cast<uint32_t>(bytes.size()), &root);
    }
    parsed.root.reset(root);
    if (root == nullptr) {
        parsed.fault = Parsed::Fault::malformed;
        parsed.reason = "it is no property list";
    }
    return parsed;
}

std::string toBinary(plist_t root) {
    char* bytes = nullptr;
    uint32_t size = 0;
    plist_to_bin(root, &bytes, &size);
    if (bytes == nullptr) {
        throw std::bad_alloc();
    }
    const std::unique_ptr<char, void (*)(char*)> owner(bytes, plist_to_bin_free);
    return std::string(bytes, size);
}

Tree makeInteger(Integer value) {
    const bool needsMore = !value.negative && value.bits > MAX_SIGNED;
    return needsMore ? fromObject('\x14', bigEndian(0) + bigEndian(value.bits))
                     : fromObject('\x13', bigEndian(value.bits));
}

Tree makeDate(double seconds) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &seconds, sizeof bits);
    return fromObject('\x33', bigEndian(bits));
}

Integer integerOf(plist_t node) {
    uint64_t bits = 0;
    plist_get_uint_val(node, &bits);
    return {bits, bits > MAX_SIGNED && objectOf(node).marker == 0x13};
}

double dateOf(plist_t node) {
    const Object object = objectOf(node);
    double seconds = 0;
    std::memcpy(&seconds, &object.value, sizeof seconds);
    return seconds;
}

}  // namespace cv::plist
