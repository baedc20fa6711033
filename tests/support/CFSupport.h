#pragma once

// What tests of CoreFoundation objects share.

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "CvBase/Mac/CFReference.h"

namespace test {

using cv::CFReference;

/// A string of exactly these UTF-16 units.
inline CFReference<CFStringRef> makeString(std::u16string_view units) {
    return CFReference<CFStringRef>(CFStringCreateWithCharacters(
        kCFAllocatorDefault, reinterpret_cast<const UniChar*>(units.data()), static_cast<CFIndex>(units.size())));
}

/// A string of the text in UTF-8; none when it is not UTF-8.
inline CFReference<CFStringRef> string(const std::string& text) {
    return CFReference<CFStringRef>(
        CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8));
}

inline CFReference<CFNumberRef> number(SInt64 value) {
    return CFReference<CFNumberRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &value));
}

inline CFReference<CFNumberRef> number(double value) {
    return CFReference<CFNumberRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &value));
}

inline CFReference<CFUUIDRef> uuid(const std::string& text) {
    return CFReference<CFUUIDRef>(CFUUIDCreateFromString(kCFAllocatorDefault, string(text).get()));
}

inline CFReference<CFURLRef> url(const std::string& path, bool isDirectory = true) {
    return CFReference<CFURLRef>(
        CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()),
                                                static_cast<CFIndex>(path.size()), isDirectory));
}

/// The UTF-16 units of `string`.
inline std::u16string units(CFStringRef string) {
    std::u16string result(static_cast<std::size_t>(CFStringGetLength(string)), u'\0');
    CFStringGetCharacters(string, CFRangeMake(0, CFStringGetLength(string)), reinterpret_cast<UniChar*>(result.data()));
    return result;
}

/// `string` in UTF-8 up to its first NUL; throws std::runtime_error when it cannot be converted.
inline std::string text(CFStringRef string) {
    std::vector<char> buffer(static_cast<std::size_t>(CFStringGetLength(string)) * 3 + 1);
    if (!CFStringGetCString(string, buffer.data(), static_cast<CFIndex>(buffer.size()), kCFStringEncodingUTF8)) {
        throw std::runtime_error("the string has no form in UTF-8");
    }
    return buffer.data();
}

}  // namespace test
