// From and to UTF-16 and UTF-32, through CoreFoundation.

#include <CoreFoundation/CoreFoundation.h>

#include <memory>

#include "CvBase/Mac/CFReference.h"
#include "CvBase/common/string/common_string_bytes.h"

static_assert(sizeof(wchar_t) == 4, "wide text is UTF-32");
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "wide text is handed to CoreFoundation as little-endian");

namespace {

/// Longer text is refused rather than allocated for.
constexpr CFIndex MOST_UNITS = 100000;

using StringRef = cv::CFReference<CFStringRef>;

CFStringEncoding platformEncoding(unsigned int selector) {
    return selector == 2 ? CFStringEncoding{kCFStringEncodingMacRoman} : CFStringEncoding{kCFStringEncodingUTF8};
}

/// The number of units before the terminating 0; MOST_UNITS when there are as many or more, and then nothing after
/// them was read.
template <typename Unit>
CFIndex countUnits(const Unit* units) {
    // The limit is looked at every eighth time only: with g++ that saves two fifths of the time.
    constexpr CFIndex STEP = 8;
    static_assert(MOST_UNITS % STEP == 0);
    for (CFIndex count = 0; count < MOST_UNITS; count += STEP) {
#pragma GCC unroll 8
        for (CFIndex i = count; i < count + STEP; ++i) {
            if (units[i] == 0) {
                return i;
            }
        }
    }
    return MOST_UNITS;
}

/// The text up to its first NUL; null when it does not convert or needs more than `capacity` bytes with its NUL.
String encode(CFStringRef string, CFStringEncoding encoding, CFIndex capacity) {
    if (string == nullptr) {
        return {};
    }
    const std::unique_ptr<char[]> buffer(new char[static_cast<std::size_t>(capacity)]);
    if (!CFStringGetCString(string, buffer.get(), capacity, encoding)) {
        return {};
    }
    buffer[static_cast<std::size_t>(capacity) - 1] = '\0';
    return String(buffer.get());
}

}  // namespace

String::String(const unsigned short* utf16, unsigned int encoding) {
    const CFIndex units = utf16 != nullptr ? countUnits(utf16) : MOST_UNITS;
    if (units == 0) {
        *this = "";
    } else if (units < MOST_UNITS) {
        const StringRef string(CFStringCreateWithCharacters(kCFAllocatorDefault, utf16, units));
        *this = encode(string.get(), platformEncoding(encoding), 5 * units + 5);
    }
}

String::String(const wchar_t* s) {
    const CFIndex units = countUnits(s);
    if (units < MOST_UNITS) {
        const StringRef string(CFStringCreateWithBytesNoCopy(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(s),
                                                             4 * units, kCFStringEncodingUTF32LE, false,
                                                             kCFAllocatorNull));
        *this = encode(string.get(), kCFStringEncodingUTF8,
                       CFStringGetMaximumSizeForEncoding(units, kCFStringEncodingUTF8) + 1);
    }
}

shared_array<unsigned short> String::Unicode(unsigned int encoding) const {
    const StringRef string(CFStringCreateWithCString(kCFAllocatorDefault, CStr(), platformEncoding(encoding)));
    if (!string) {
        return {};
    }
    const CFIndex units = CFStringGetLength(string.get());
    if (units > MOST_UNITS) {
        return {};
    }
    shared_array<unsigned short> utf16(new unsigned short[static_cast<std::size_t>(units) + 1]);
    utf16[static_cast<std::size_t>(units)] = 0;
    if (units > 0) {
        CFStringGetCharacters(string.get(), CFRangeMake(0, units), utf16.get());
    }
    return utf16;
}
