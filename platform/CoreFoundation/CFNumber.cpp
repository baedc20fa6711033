#include <CoreFoundation/CFNumber.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

#include "platform/CoreFoundation/Number.h"

namespace cv {

const objc_class BOOLEAN_CLASS("__NSCFBoolean", OBJECT_METACLASS, &OBJECT_CLASS, nullptr);
const objc_class NUMBER_CLASS("NSNumber", OBJECT_METACLASS, &OBJECT_CLASS, nullptr, valueOf<__CFNumber>());

}  // namespace cv

namespace {

const __CFBoolean BOOLEAN_TRUE(true);
const __CFBoolean BOOLEAN_FALSE(false);

constexpr double TWO_TO_63 = 9223372036854775808.0;
constexpr double TWO_TO_64 = 18446744073709551616.0;

template <typename Value>
Value load(const void* source) {
    Value value;
    std::memcpy(&value, source, sizeof value);
    return value;
}

/// Stores the low bits of an integer, and says whether that is all of it.
template <typename Integer>
bool storeLow(std::int64_t value, void* target) {
    const auto stored = static_cast<Integer>(value);
    std::memcpy(target, &stored, sizeof stored);
    return stored == value;
}

/// A floating-point number rounded toward zero and kept to the range of 64 bits.
std::int64_t nearestInteger(double value) {
    if (std::isnan(value)) {
        return 0;
    }
    if (value < -TWO_TO_63 || value >= TWO_TO_63) {
        return value < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
    }
    return static_cast<std::int64_t>(value);
}

double asDouble(const __CFNumber& number) {
    return number.isFloating()   ? number.real()
           : number.isNegative() ? static_cast<double>(static_cast<std::int64_t>(number.bits()))
                                 : static_cast<double>(number.bits());
}

bool storeInteger(const __CFNumber& number, CFNumberType type, void* target) {
    const std::int64_t value =
        number.isFloating() ? nearestInteger(number.real()) : static_cast<std::int64_t>(number.bits());
    const bool fits = type == kCFNumberSInt64Type ? storeLow<SInt64>(value, target) : storeLow<SInt32>(value, target);
    return fits && number == __CFNumber(value, kCFNumberSInt64Type);
}

template <typename Real>
bool storeReal(const __CFNumber& number, void* target) {
    const auto stored = static_cast<Real>(asDouble(number));
    std::memcpy(target, &stored, sizeof stored);
    return number == __CFNumber(double{stored}, kCFNumberFloat64Type);
}

}  // namespace

__CFNumber::__CFNumber(std::int64_t integer, CFNumberType numberType) noexcept
    : objc_object(cv::NUMBER_CLASS),
      type(numberType),
      isFloating_(false),
      isNegative_(integer < 0),
      bits_(static_cast<std::uint64_t>(integer)) {}

__CFNumber::__CFNumber(std::uint64_t integer) noexcept
    : objc_object(cv::NUMBER_CLASS), type(kCFNumberSInt64Type), isFloating_(false), bits_(integer) {}

__CFNumber::__CFNumber(double real, CFNumberType numberType) noexcept
    : objc_object(cv::NUMBER_CLASS), type(numberType), isFloating_(true), real_(real) {}

bool __CFNumber::integer(bool& isNegative, std::uint64_t& bits) const noexcept {
    if (!isFloating_) {
        isNegative = isNegative_;
        bits = bits_;
        return true;
    }
    if (!(real_ >= -TWO_TO_63 && real_ < TWO_TO_64) || std::trunc(real_) != real_) {
        return false;
    }
    isNegative = real_ < 0;
    bits =
        isNegative ? static_cast<std::uint64_t>(static_cast<std::int64_t>(real_)) : static_cast<std::uint64_t>(real_);
    return true;
}

bool __CFNumber::operator==(const __CFNumber& other) const noexcept {
    bool isNegative = false;
    bool otherIsNegative = false;
    std::uint64_t own = 0;
    std::uint64_t others = 0;
    const bool isWhole = integer(isNegative, own);
    if (isWhole != other.integer(otherIsNegative, others)) {
        return false;
    }
    return isWhole ? isNegative == otherIsNegative && own == others
                   : real_ == other.real_ || (std::isnan(real_) && std::isnan(other.real_));
}

CFHashCode __CFNumber::hash() const noexcept {
    bool isNegative = false;
    std::uint64_t bits = 0;
    if (integer(isNegative, bits)) {
        return std::hash<std::uint64_t>()(bits);
    }
    return std::isnan(real_) ? 0 : std::hash<double>()(real_);
}

const CFBooleanRef kCFBooleanTrue = &BOOLEAN_TRUE;
const CFBooleanRef kCFBooleanFalse = &BOOLEAN_FALSE;

CFTypeID CFBooleanGetTypeID() {
    return cv::typeID(cv::BOOLEAN_CLASS);
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
    return boolean->value;
}

CFTypeID CFNumberGetTypeID() {
    return cv::typeID(cv::NUMBER_CLASS);
}

CFNumberType CFNumberGetType(CFNumberRef number) {
    return number->type;
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void* value) {
    if (value == nullptr) {
        return nullptr;
    }
    switch (type) {
        case kCFNumberSInt32Type:
        case kCFNumberIntType:
            return new __CFNumber(std::int64_t{load<SInt32>(value)}, kCFNumberSInt32Type);
        case kCFNumberSInt64Type:
            return new __CFNumber(load<SInt64>(value), type);
        case kCFNumberFloat32Type:
            return new __CFNumber(double{load<float>(value)}, type);
        case kCFNumberFloat64Type:
            return new __CFNumber(load<double>(value), type);
        default:
            return nullptr;
    }
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
    switch (type) {
        case kCFNumberSInt32Type:
        case kCFNumberIntType:
        case kCFNumberSInt64Type:
            return storeInteger(*number, type, value);
        case kCFNumberFloat32Type:
            return storeReal<float>(*number, value);
        case kCFNumberFloat64Type:
            return storeReal<double>(*number, value);
        default:
            return false;
    }
}
