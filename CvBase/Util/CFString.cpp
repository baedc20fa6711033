#include "CvBase/Util/CFString.h"

#include <cstddef>
#include <new>

#include "CvBase/common/common_smart_ptr.h"

namespace Util {
namespace {

/// A new string of `text`, or an empty one when `text` is not valid UTF-8.
CFStringRef createString(const char* text) {
    CFStringRef string = CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8);
    if (string == nullptr) {
        string = CFStringCreateWithCString(kCFAllocatorDefault, "", kCFStringEncodingUTF8);
    }
    if (string == nullptr) {
        throw std::bad_alloc();
    }
    return string;
}

}  // namespace

CFString::CFString(const char* text, ReleaseBehavior behavior)
    : CFString(createString(text != nullptr ? text : ""), behavior) {}

CFString::CFString(const String& text, ReleaseBehavior behavior) : CFString(text.CStr(), behavior) {}

CFString::CFString(CFStringRef reference, ReleaseBehavior behavior)
    : release_(behavior == ReleaseOnDestroy), reference_(reference != nullptr ? reference : createString("")) {}

CFString::~CFString() {
    if (release_) {
        CFRelease(reference_);
    }
}

String CFString::ToString() const {
    constexpr CFIndex LONGEST = 1'000'000;
    constexpr CFIndex BYTES_PER_UNIT = 4;
    const CFIndex length = CFStringGetLength(reference_);
    if (length == 0 || length > LONGEST) {
        return String("");
    }
    const CFIndex end = BYTES_PER_UNIT * length;
    const shared_array<char> bytes(new char[static_cast<std::size_t>(end) + 1]);
    if (!CFStringGetCString(reference_, bytes.get(), end + 1, kCFStringEncodingUTF8)) {
        return String("");
    }
    bytes[static_cast<std::size_t>(end)] = '\0';
    return String(bytes.get());
}

}  // namespace Util
