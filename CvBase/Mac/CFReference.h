#pragma once

#include <CoreFoundation/CFBase.h>

#include <utility>

namespace cv {

/// Owns one reference to a CoreFoundation object, or none, and gives it up at the end of the scope.
///
///     const cv::CFReference number(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &value));
///     CFPreferencesSetValue(key, number.get(), ...);
///
/// A function with Create or Copy in its name returns a reference that the caller owns: pass it to the constructor. A
/// reference from any other function belongs to somebody else: pass it to retained().
///
/// `Ref` is a reference type of CoreFoundation, such as CFStringRef. Different threads may own references to one
/// object, but one CFReference belongs to one thread at a time.
template <typename Ref>
class CFReference {
public:
    /// Empty: owns none.
    CFReference() = default;

    /// Takes over a reference that the caller owns; null gives an empty CFReference. Retains nothing.
    explicit CFReference(Ref owned) : ref_(owned) {}

    /// Takes over the reference of `other`, which is empty afterwards; assigning gives up the old reference. A
    /// CFReference cannot be copied; retained() makes a second reference.
    CFReference(CFReference&& other) noexcept : ref_(std::exchange(other.ref_, nullptr)) {}
    CFReference& operator=(CFReference&& other) noexcept {
        CFReference(std::move(other)).swap(*this);
        return *this;
    }

    ~CFReference() {
        if (ref_ != nullptr) {
            CFRelease(ref_);
        }
    }

    /// The object, which stays owned here; null when there is none.
    [[nodiscard]] Ref get() const { return ref_; }

    /// Whether there is an object.
    explicit operator bool() const { return ref_ != nullptr; }

    /// Hands the reference over to the caller, who has to release it; null when there is none.
    [[nodiscard]] Ref release() { return std::exchange(ref_, nullptr); }

private:
    void swap(CFReference& other) noexcept { std::swap(ref_, other.ref_); }

    Ref ref_ = nullptr;
};

/// Retains `object`, which may be null, and returns the owner of the new reference.
template <typename Ref>
[[nodiscard]] CFReference<Ref> retained(Ref object) {
    if (object != nullptr) {
        CFRetain(object);
    }
    return CFReference<Ref>(object);
}

}  // namespace cv
