#pragma once

// What tests of CoreFoundation objects share.

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// Owns one reference count of a CoreFoundation object, or nothing.
template <typename Ref>
class Owned {
public:
    explicit Owned(Ref ref) : ref_(ref) {}
    ~Owned() {
        if (ref_ != nullptr) {
            CFRelease(ref_);
        }
    }
    Owned(Owned&& other) noexcept : ref_(other.ref_) { other.ref_ = nullptr; }
    Owned& operator=(Owned&&) = delete;

    Ref get() const { return ref_; }
    explicit operator bool() const { return ref_ != nullptr; }

private:
    Ref ref_;
};

/// A string of exactly these UTF-16 units.
inline Owned<CFStringRef> makeString(std::u16string_view units) {
    return Owned<CFStringRef>(CFStringCreateWithCharacters(
        kCFAllocatorDefault, reinterpret_cast<const UniChar*>(units.data()), static_cast<CFIndex>(units.size())));
}

/// A string of the text in UTF-8; none when it is no UTF-8.
inline Owned<CFStringRef> string(const std::string& text) {
    return Owned<CFStringRef>(CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8));
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
