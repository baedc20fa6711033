#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFUUID.h>

#include <array>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <string_view>

#include "platform/CoreFoundation/String.h"

namespace {

extern const objc_class UUID_CLASS;

using Bytes = std::array<UInt8, sizeof(CFUUIDBytes)>;

}  // namespace

struct __CFUUID : objc_object {
    explicit __CFUUID(const Bytes& identifier, std::uint32_t references = 1)
        : objc_object(UUID_CLASS, references), bytes(identifier) {}
    bool operator==(const __CFUUID& other) const noexcept { return bytes == other.bytes; }
    CFHashCode hash() const noexcept {
        return std::hash<std::string_view>()({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }

    const Bytes bytes;
};

namespace {

const objc_class UUID_CLASS("__NSConcreteUUID", cv::OBJECT_METACLASS, &cv::OBJECT_CLASS, nullptr,
                            cv::valueOf<__CFUUID>());

constexpr std::size_t TEXT_LENGTH = 36;
constexpr std::u16string_view UPPER_DIGITS = u"0123456789ABCDEF";
constexpr std::u16string_view LOWER_DIGITS = u"0123456789abcdef";

constexpr bool isHyphenAt(std::size_t position) {
    return position == 8 || position == 13 || position == 18 || position == 23;
}

std::optional<unsigned> digitValue(char16_t digit) {
    for (const std::u16string_view digits : {UPPER_DIGITS, LOWER_DIGITS}) {
        if (const std::size_t value = digits.find(digit); value != std::u16string_view::npos) {
            return static_cast<unsigned>(value);
        }
    }
    return std::nullopt;
}

std::optional<Bytes> parse(std::u16string_view text) {
    Bytes bytes{};
    std::size_t digits = 0;
    if (text.size() != TEXT_LENGTH) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < TEXT_LENGTH; ++i) {
        const auto value = digitValue(text[i]);
        if (isHyphenAt(i) ? text[i] != u'-' : !value) {
            return std::nullopt;
        }
        if (value) {
            UInt8& byte = bytes[digits++ / 2];
            byte = static_cast<UInt8>(byte * 16U + *value);
        }
    }
    return bytes;
}

}  // namespace

CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef, CFUUIDBytes bytes) {
    Bytes identifier{};
    std::memcpy(identifier.data(), &bytes, sizeof bytes);
    return new __CFUUID(identifier);
}

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef, UInt8 byte0, UInt8 byte1, UInt8 byte2, UInt8 byte3,
                                         UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9,
                                         UInt8 byte10, UInt8 byte11, UInt8 byte12, UInt8 byte13, UInt8 byte14,
                                         UInt8 byte15) {
    static std::mutex mutex;
    // Never destroyed: other images use their constants until the process ends.
    static auto& constants = *new std::map<Bytes, CFUUIDRef>;

    const Bytes bytes = {byte0, byte1, byte2,  byte3,  byte4,  byte5,  byte6,  byte7,
                         byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15};
    const std::lock_guard<std::mutex> lock(mutex);
    CFUUIDRef& constant = constants[bytes];
    if (constant == nullptr) {
        constant = new __CFUUID(bytes, objc_object::IMMORTAL);
    }
    return constant;
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid) {
    CFUUIDBytes bytes = {};
    std::memcpy(&bytes, uuid->bytes.data(), sizeof bytes);
    return bytes;
}

CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef, CFStringRef text) {
    const auto bytes = text != nullptr ? parse(text->units()) : std::nullopt;
    return bytes ? new __CFUUID(*bytes) : nullptr;
}

CFStringRef CFUUIDCreateString(CFAllocatorRef, CFUUIDRef uuid) {
    std::array<char16_t, TEXT_LENGTH> text{};
    std::size_t digits = 0;
    for (std::size_t i = 0; i < TEXT_LENGTH; ++i) {
        if (isHyphenAt(i)) {
            text[i] = u'-';
            continue;
        }
        const UInt8 byte = uuid->bytes[digits / 2];
        text[i] = UPPER_DIGITS[digits % 2 == 0 ? byte >> 4 : byte & 0x0F];
        ++digits;
    }
    return __CFString::make({text.data(), text.size()});
}
