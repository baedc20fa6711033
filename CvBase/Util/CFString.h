#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <vector>

#include "CvBase/common/common_string.h"

#pragma GCC visibility push(default)

namespace Util {

/// One CoreFoundation string, made from text or adopted, for the length of a scope.
///
///     const Util::CFString key(name, Util::CFString::ReleaseOnDestroy);
///     CFPreferencesSetValue(key.Get(), ...);
///
/// Texts are UTF-8 in both directions. One thread at a time.
class CFString {
public:
    /// What the destructor does with the reference: gives it up, or nothing. Any value but 0 is DoNotRelease. With
    /// DoNotRelease, a string made here is the caller's to release through Get().
    enum ReleaseBehavior : std::int32_t { ReleaseOnDestroy = 0, DoNotRelease = 1 };

    /// The string of the text up to its NUL. Text that is null or not valid UTF-8 gives the empty string. Throws
    /// std::bad_alloc.
    CFString(const char* text, ReleaseBehavior behavior);
    CFString(const String& text, ReleaseBehavior behavior);

    /// Adopts `reference` without retaining it; a new empty string stands for a null one.
    CFString(CFStringRef reference, ReleaseBehavior behavior);

    ~CFString();

    CFString(const CFString&) = delete;
    CFString& operator=(const CFString&) = delete;

    /// The string, never null; good while this object lives.
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
