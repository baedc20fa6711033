#include <CoreFoundation/CFNumber.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "platform/CoreFoundation/Bridge.h"

namespace {

bool isFloating(NSNumber* number) {
    const char type = *[number objCType];
    return type == 'd' || type == 'f';
}

/// The value that `source` points to, at whatever address it lies.
template <typename Value>
Value load(const void* source) {
    Value value;
    std::memcpy(&value, source, sizeof value);
    return value;
}

/// Stores the integer `value` as an Integer, and says whether it fits.
template <typename Integer>
bool store(long long value, void* target) {
    const auto stored = static_cast<Integer>(value);
    std::memcpy(target, &stored, sizeof stored);
    return static_cast<long long>(stored) == value;
}

/// Rounds toward zero and keeps to the range of a 64-bit integer; false when that changes the value.
bool toInteger(double value, long long& result) {
    constexpr double LIMIT = 9223372036854775808.0;  // 2^63
    if (std::isnan(value)) {
        result = 0;
        return false;
    }
    if (value < -LIMIT || value >= LIMIT) {
        result = value < 0 ? std::numeric_limits<long long>::min() : std::numeric_limits<long long>::max();
        return false;
    }
    result = static_cast<long long>(value);
    return static_cast<double>(result) == value;
}

/// The number as a 64-bit integer; false when it is none.
bool toInteger(NSNumber* number, long long& result) {
    if (isFloating(number)) {
        return toInteger([number doubleValue], result);
    }
    result = [number longLongValue];
    const bool isUnsigned = *[number objCType] == 'Q' || *[number objCType] == 'L';
    return !(isUnsigned && result < 0);
}

bool storeDouble(NSNumber* number, void* target) {
    const double value = [number doubleValue];
    std::memcpy(target, &value, sizeof value);
    if (isFloating(number)) {
        return true;
    }
    long long exact = 0;
    long long back = 0;
    return toInteger(number, exact) && toInteger(value, back) && exact == back;
}

}  // namespace

CFTypeID CFNumberGetTypeID() {
    return cv::typeID([NSNumber class]);
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void* value) {
    if (value == nullptr) {
        return nullptr;
    }
    return cv::guarded<CFNumberRef>(nullptr, [=]() -> CFNumberRef {
        switch (type) {
            case kCFNumberSInt32Type:
            case kCFNumberIntType:
                return cv::reference<CFNumberRef>([[NSNumber alloc] initWithInt:load<SInt32>(value)]);
            case kCFNumberSInt64Type:
                return cv::reference<CFNumberRef>([[NSNumber alloc] initWithLongLong:load<SInt64>(value)]);
            case kCFNumberFloat64Type:
                return cv::reference<CFNumberRef>([[NSNumber alloc] initWithDouble:load<double>(value)]);
            default:
                return nullptr;
        }
    });
}

Boolean CFNumberGetValue(CFNumberRef reference, CFNumberType type, void* value) {
    NSNumber* number = cv::object<NSNumber*>(reference);
    if (type == kCFNumberFloat64Type) {
        return storeDouble(number, value);
    }
    long long integer = 0;
    const bool isExact = toInteger(number, integer);
    switch (type) {
        case kCFNumberSInt32Type:
        case kCFNumberIntType:
            return store<SInt32>(integer, value) && isExact;
        case kCFNumberSInt64Type:
            return store<SInt64>(integer, value) && isExact;
        default:
            return false;
    }
}
