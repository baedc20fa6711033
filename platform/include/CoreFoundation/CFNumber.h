#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef CFIndex CFNumberType;

enum { kCFNumberSInt32Type = 3, kCFNumberSInt64Type = 4, kCFNumberFloat64Type = 6, kCFNumberIntType = 9 };

CF_EXPORT CFTypeID CFNumberGetTypeID(void);

/// A new number from the value of `type` that `value` points to; null for another type or a null `value`.
CF_EXPORT CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value);

/// Stores the number as `type`; false when it does not fit without loss (what fits is stored all the same).
CF_EXPORT Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

CF_EXTERN_C_END
