#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// What CFGetTypeID() returns for an array.
CF_EXPORT CFTypeID CFArrayGetTypeID(void);

/// The number of values.
CF_EXPORT CFIndex CFArrayGetCount(CFArrayRef array);

/// The value at `index` (0 to count - 1), owned by the array. Any other index ends the process with a message.
const CF_EXPORT void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);

CF_EXTERN_C_END
