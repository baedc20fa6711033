#include <CoreFoundation/CFString.h>

#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>

#include "platform/CoreFoundation/String.h"
#include "platform/CoreFoundation/TextConversion.h"

namespace cv {

namespace {

/// A made string is one block with its units, so it is not deleted by its own size.
void destroyString(const objc_object* object) {
    const auto* const string = static_cast<const __CFString*>(object);
    string->~__CFString();
    ::operator delete(const_cast<__CFString*>(string));
}

constexpr Behaviour STRING_BEHAVIOUR{destroyString, valueOf<__CFString>().equal, valueOf<__CFString>().hash};

}  // namespace

const objc_class STRING_CLASS("NSString", OBJECT_METACLASS, &OBJECT_CLASS, nullptr, STRING_BEHAVIOUR);

std::optional<std::string> utf8Of(CFTypeRef text) {
    const __CFString* const string = objectOf<__CFString>(STRING_CLASS, text);
    if (string == nullptr) {
        return std::nullopt;
    }
    std::string utf8(3 * string->units().size(), '\0');
    const auto size = encodeText(string->units(), kCFStringEncodingUTF8, utf8.data(), utf8.size());
    if (!size) {
        return std::nullopt;
    }
    utf8.resize(*size);
    return utf8;
}

CFStringRef createString(std::string_view utf8) {
    // Decoding drops one such mark, so it is given one to drop.
    return __CFString::decode("\xEF\xBB\xBF" + std::string(utf8), kCFStringEncodingUTF8);
}

}  // namespace cv

__CFString::__CFString(std::u16string_view text, std::uint32_t references) noexcept
    : objc_object(cv::STRING_CLASS, references), units_(text) {}

const __CFString* __CFString::make(std::u16string_view text, std::uint32_t references) {
    if (text.size() > (std::numeric_limits<std::size_t>::max() - sizeof(__CFString)) / sizeof(char16_t)) {
        throw std::bad_alloc();
    }
    const std::size_t size = text.size() * sizeof(char16_t);
    auto* const block = static_cast<char*>(::operator new(sizeof(__CFString) + size));
    auto* const units = reinterpret_cast<char16_t*>(block + sizeof(__CFString));
    if (size != 0) {
        std::memcpy(units, text.data(), size);
    }
    return new (block) __CFString(std::u16string_view(units, text.size()), references);
}

const __CFString* __CFString::decode(std::string_view bytes, CFStringEncoding encoding, std::uint32_t references) {
    const std::unique_ptr<char16_t[]> units(new char16_t[bytes.size()]);
    const auto count = cv::decodeText(bytes, encoding, units.get());
    return count ? make({units.get(), *count}, references) : nullptr;
}

namespace {

bool isByteEncoding(CFStringEncoding encoding) {
    return encoding == kCFStringEncodingUTF8 || encoding == kCFStringEncodingASCII ||
           encoding == kCFStringEncodingMacRoman;
}

}  // namespace

CFTypeID CFStringGetTypeID() {
    return cv::typeID(cv::STRING_CLASS);
}

CFStringRef __CFStringMakeConstantString(const char* utf8) {
    static std::mutex mutex;
    // Never destroyed: other images use their constants until the process ends.
    static auto& constants = *new std::unordered_map<std::string, CFStringRef>;

    const std::lock_guard<std::mutex> lock(mutex);
    CFStringRef& constant = constants[utf8];
    if (constant == nullptr) {
        constant = __CFString::decode(utf8, kCFStringEncodingUTF8, objc_object::IMMORTAL);
        if (constant == nullptr) {
            cv::fail("CFSTR", "the literal is not UTF-8");
        }
    }
    return constant;
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* bytes, CFStringEncoding encoding) {
    return bytes != nullptr && isByteEncoding(encoding) ? __CFString::decode(bytes, encoding) : nullptr;
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* units, CFIndex count) {
    if (count < 0 || (units == nullptr && count != 0)) {
        return nullptr;
    }
    return __CFString::make({reinterpret_cast<const char16_t*>(units), static_cast<std::size_t>(count)});
}

CFStringRef CFStringCreateWithBytesNoCopy(CFAllocatorRef, const UInt8* bytes, CFIndex byteCount,
                                          CFStringEncoding encoding, Boolean, CFAllocatorRef contentsDeallocator) {
    if (contentsDeallocator != kCFAllocatorNull) {
        cv::fail("CFStringCreateWithBytesNoCopy", "the deallocator must be kCFAllocatorNull");
    }
    if (byteCount < 0 || (bytes == nullptr && byteCount != 0)) {
        return nullptr;
    }
    return __CFString::decode({reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(byteCount)}, encoding);
}

CFIndex CFStringGetLength(CFStringRef string) {
    return static_cast<CFIndex>(string->units().size());
}

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* units) {
    const CFIndex length = CFStringGetLength(string);
    if (range.location < 0 || range.length < 0 || range.location > length || range.length > length - range.location) {
        cv::fail("CFStringGetCharacters", "the range is not inside the string");
    }
    if (range.length != 0) {
        std::memcpy(units, string->units().data() + range.location,
                    static_cast<std::size_t>(range.length) * sizeof(UniChar));
    }
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) {
    if (buffer == nullptr || bufferSize <= 0 || !isByteEncoding(encoding)) {
        return false;
    }
    const auto count = cv::encodeText(string->units(), encoding, buffer, static_cast<std::size_t>(bufferSize) - 1);
    if (!count) {
        return false;
    }
    buffer[*count] = '\0';
    return true;
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
    CFIndex factor = 1;
    switch (encoding) {
        case kCFStringEncodingUTF8:
            factor = 3;
            break;
        case kCFStringEncodingUTF16:
            factor = 2;
            break;
        case kCFStringEncodingUTF32LE:
            factor = 4;
            break;
        default:
            break;
    }
    return length < 0 || length > std::numeric_limits<CFIndex>::max() / factor ? -1 : length * factor;
}
