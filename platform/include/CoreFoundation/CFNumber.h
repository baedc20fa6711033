#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef CFIndex CFNumberType;

/// The C types of numbers.
enum {
    kCFNumberSInt32Type = 3,   ///< int32_t
    kCFNumberSInt64Type = 4,   ///< int64_t
    kCFNumberFloat32Type = 5,  ///< float
    kCFNumberFloat64Type = 6,  ///< double
    kCFNumberIntType = 9       ///< int
};

/// The two Booleans, immortal. They are not numbers, and equal none.
const CF_EXPORT CFBooleanRef kCFBooleanTrue;
const CF_EXPORT CFBooleanRef kCFBooleanFalse;

/// What CFGetTypeID() returns for a Boolean.
CF_EXPORT CFTypeID CFBooleanGetTypeID(void);

/// The Boolean's value.
CF_EXPORT Boolean CFBooleanGetValue(CFBooleanRef boolean);

/// What CFGetTypeID() returns for a number.
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
