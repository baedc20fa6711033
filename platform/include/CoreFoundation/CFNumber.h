#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef CFIndex CFNumberType;

enum {
    kCFNumberSInt32Type = 3,
    kCFNumberSInt64Type = 4,
    kCFNumberFloat32Type = 5,
    kCFNumberFloat64Type = 6,
    kCFNumberIntType = 9
};

/// The two Booleans. They are no numbers.
const CF_EXPORT CFBooleanRef kCFBooleanTrue;
const CF_EXPORT CFBooleanRef kCFBooleanFalse;

CF_EXPORT CFTypeID CFBooleanGetTypeID(void);
CF_EXPORT Boolean CFBooleanGetValue(CFBooleanRef boolean);

CF_EXPORT CFTypeID CFNumberGetTypeID(void);

/// A new number from the value of `type` that `value` points to; null for another type or a null `value`.
CF_EXPORT CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value);

/// The type that the number was made with; for kCFNumberIntType that is kCFNumberSInt32Type. A whole number of a
/// property list has kCFNumberSInt64Type, also one from 2^63 to 2^64 - 1.
CF_EXPORT CFNumberType CFNumberGetType(CFNumberRef number);

/// Stores the number as `type`; false when it does not fit without loss (what fits is stored all
/// the same: the low bits of an integer, the nearest floating-point number).
CF_EXPORT Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

CF_EXTERN_C_END
