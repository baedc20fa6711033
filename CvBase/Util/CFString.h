#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <vector>

#include "CvBase/common/common_string.h"

#pragma GCC visibility push(default)

namespace Util {

/// One CoreFoundation string, made from text or adopted, for the length of a scope. It can be neither copied nor moved.
///
///     const Util::CFString key(name, Util::CFString::ReleaseOnDestroy);
///     CFPreferencesSetValue(key.Get(), ...);
///
/// Texts are UTF-8 in both directions. One thread at a time.
class CFString {
public:
    /// Whether the destructor releases the reference. Any value but 0 acts as DoNotRelease; then the caller has to
    /// release a string that was made here, through Get().
    enum ReleaseBehavior : std::int32_t { ReleaseOnDestroy = 0, DoNotRelease = 1 };

    /// The string of the text up to its NUL. Text that is null or not valid UTF-8 gives the empty string. Throws
    /// std::bad_alloc.
    CFString(const char* text, ReleaseBehavior behavior);
    CFString(const String& text, ReleaseBehavior behavior);

    /// Takes over `reference` without retaining it. If `reference` is null, makes a new empty string instead. Throws
    /// std::bad_alloc.
    CFString(CFStringRef reference, ReleaseBehavior behavior);

    ~CFString();

    CFString(const CFString&) = delete;
    CFString& operator=(const CFString&) = delete;

    /// The string, never null; valid while this object lives.
    [[nodiscard]] CFStringRef Get() const { return reference_; }

    /// The text up to its first NUL character. Empty when the string has more than 1,000,000 UTF-16 units or an
    /// unpaired surrogate.
    [[nodiscard]] String ToString() const;

private:
    bool release_;
    CFStringRef reference_;
    std::vector<char> buffer_;  // keeps the object's size; no operation fills it
};

}  // namespace Util

#pragma GCC visibility pop
