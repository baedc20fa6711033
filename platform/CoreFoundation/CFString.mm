#include <CoreFoundation/CFString.h>

#include <cstring>
#include <limits>
#include <mutex>
#include <string>
#include <unordered_map>

#include "platform/CoreFoundation/Bridge.h"
#include "platform/CoreFoundation/TextConversion.h"
#include "platform/CoreFoundation/UnitString.h"

namespace {

CFStringRef newString(const char16_t* units, std::size_t count, bool immortal = false) {
    return cv::guarded<CFStringRef>(nullptr, [=] {
        return cv::reference<CFStringRef>([CvUnitString newWithUnits:units length:count immortal:immortal]);
    });
}

CFStringRef newString(std::string_view bytes, CFStringEncoding encoding, bool immortal = false) {
    const auto units = cv::decodeText(bytes, encoding);
    return units ? newString(units->data(), units->size(), immortal) : nullptr;
}

bool isByteEncoding(CFStringEncoding encoding) {
    return encoding == kCFStringEncodingUTF8 || encoding == kCFStringEncodingASCII ||
           encoding == kCFStringEncodingMacRoman;
}

}  // namespace

CFTypeID CFStringGetTypeID() {
    return cv::typeID([NSString class]);
}

CFStringRef __CFStringMakeConstantString(const char* utf8) {
    static std::mutex mutex;
    // Never destroyed: other images use their constants until the process ends.
    static auto& constants = *new std::unordered_map<std::string, CFStringRef>;

    const std::lock_guard<std::mutex> lock(mutex);
    CFStringRef& constant = constants[utf8];
    if (constant == nullptr) {
        constant = newString(utf8, kCFStringEncodingUTF8, true);
    }
    if (constant == nullptr) {
        cv::fail("CFSTR", "the literal is not UTF-8");
    }
    return constant;
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* bytes, CFStringEncoding encoding) {
    return bytes != nullptr && isByteEncoding(encoding) ? newString(bytes, encoding) : nullptr;
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* units, CFIndex count) {
    if (count < 0 || (units == nullptr && count != 0)) {
        return nullptr;
    }
    return newString(reinterpret_cast<const char16_t*>(units), static_cast<std::size_t>(count));
}

CFStringRef CFStringCreateWithBytesNoCopy(CFAllocatorRef, const UInt8* bytes, CFIndex byteCount,
                                          CFStringEncoding encoding, Boolean, CFAllocatorRef contentsDeallocator) {
    if (contentsDeallocator != kCFAllocatorNull) {
        cv::fail("CFStringCreateWithBytesNoCopy", "the deallocator must be kCFAllocatorNull");
    }
    if (byteCount < 0 || (bytes == nullptr && byteCount != 0)) {
        return nullptr;
    }
    return newString({reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(byteCount)}, encoding);
}

CFIndex CFStringGetLength(CFStringRef string) {
    return static_cast<CFIndex>([cv::object<NSString*>(string) length]);
}

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* units) {
    const CFIndex length = CFStringGetLength(string);
    if (range.location < 0 || range.length < 0 || range.location > length || range.length > length - range.location) {
        cv::fail("CFStringGetCharacters", "the range is not inside the string");
    }
    [cv::object<NSString*>(string)
        getCharacters:units
                range:NSMakeRange(static_cast<NSUInteger>(range.location), static_cast<NSUInteger>(range.length))];
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) {
    if (buffer == nullptr || bufferSize <= 0 || !isByteEncoding(encoding)) {
        return false;
    }
    const std::u16string units = cv::unitsOf(cv::object<NSString*>(string));
    const auto count = cv::encodeText(units, encoding, buffer, static_cast<std::size_t>(bufferSize) - 1);
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
