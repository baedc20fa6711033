#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>
#include <utility>

namespace host {

/// Owns one reference to a CoreFoundation object; may be null.
template <typename Ref>
class CFHandle {
public:
    explicit CFHandle(Ref ref = nullptr) : ref_(ref) {}
    ~CFHandle() {
        if (ref_ != nullptr) {
            CFRelease(ref_);
        }
    }
    CFHandle(CFHandle&& other) noexcept : ref_(std::exchange(other.ref_, nullptr)) {}
    CFHandle& operator=(CFHandle&& other) noexcept {
        std::swap(ref_, other.ref_);
        return *this;
    }

    Ref get() const { return ref_; }
    explicit operator bool() const { return ref_ != nullptr; }

private:
    Ref ref_;
};

/// A string of the UTF-8 text; null when it is no UTF-8.
inline CFHandle<CFStringRef> makeString(const std::string& text) {
    return CFHandle<CFStringRef>(CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8));
}

}  // namespace host
