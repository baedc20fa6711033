#pragma once

#include <CoreFoundation/CFBase.h>

#include <utility>

namespace cv {

/// Owns one reference to a CoreFoundation object, or none, and gives it up at the end of the scope.
///
///     const cv::CFReference number(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &value));
///     CFPreferencesSetValue(key, number.get(), ...);
///
/// A function with Create or Copy in its name gives a reference to own: hand it to the constructor. What any other
/// function gives belongs to somebody else: own it through retained().
template <typename Ref>
class CFReference {
public:
    /// Owns none.
    CFReference() = default;

    /// Takes over a reference of the caller's; `owned` may be null.
    explicit CFReference(Ref owned) : ref_(owned) {}

    /// Takes the reference of `other`, which has none then. There is no copy: retained() makes a second reference.
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

/// A reference of one's own to an object that belongs to somebody else; `object` may be null.
template <typename Ref>
[[nodiscard]] CFReference<Ref> retained(Ref object) {
    if (object != nullptr) {
        CFRetain(object);
    }
    return CFReference<Ref>(object);
}

}  // namespace cv
