#pragma once

#include <CoreFoundation/CFNumber.h>

#include <cstdint>

#include "platform/CoreFoundation/Object.h"

struct __CFBoolean : objc_object {
    constexpr explicit __CFBoolean(bool isTrue) noexcept;
    const bool value;
};

/// A number of the type that it was made with. Numbers are equal when their values are exactly, whatever their types.
struct __CFNumber : objc_object {
    /// A signed integer; `numberType` is one of 32 and 64 bits.
    __CFNumber(std::int64_t integer, CFNumberType numberType) noexcept;
    /// An integer from 0 to 2^64 - 1, as property lists hold them; its type is that of 64 bits.
    explicit __CFNumber(std::uint64_t integer) noexcept;
    /// A floating-point number; `numberType` is one of 32 and 64 bits.
    __CFNumber(double real, CFNumberType numberType) noexcept;

    bool isFloating() const noexcept { return isFloating_; }
    /// Whether it is an integer below 0.
    bool isNegative() const noexcept { return isNegative_; }
    /// The 64 bits of an integer.
    std::uint64_t bits() const noexcept { return bits_; }
    /// The value of a floating-point number.
    double real() const noexcept { return real_; }

    bool operator==(const __CFNumber& other) const noexcept;
    CFHashCode hash() const noexcept;

    const CFNumberType type;

private:
    /// The number as an integer; false when it is not one that 64 bits hold.
    bool integer(bool& isNegative, std::uint64_t& bits) const noexcept;

    bool isFloating_;
    bool isNegative_ = false;
    std::uint64_t bits_ = 0;
    double real_ = 0;
};

namespace cv {

extern const objc_class BOOLEAN_CLASS;
extern const objc_class NUMBER_CLASS;

}  // namespace cv

constexpr __CFBoolean::__CFBoolean(bool isTrue) noexcept : objc_object(cv::BOOLEAN_CLASS, IMMORTAL), value(isTrue) {}
