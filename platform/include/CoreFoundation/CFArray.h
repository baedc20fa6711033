#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

CF_EXPORT CFTypeID CFArrayGetTypeID(void);
CF_EXPORT CFIndex CFArrayGetCount(CFArrayRef array);

/// The value at `index` (0 to count - 1), owned by the array.
const CF_EXPORT void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);

CF_EXTERN_C_END
