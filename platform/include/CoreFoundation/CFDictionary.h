#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

CF_EXPORT CFTypeID CFDictionaryGetTypeID(void);

/// The value at `key`, owned by the dictionary; null when there is none.
const CF_EXPORT void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);

CF_EXTERN_C_END
