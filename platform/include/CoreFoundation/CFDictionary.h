#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// What CFGetTypeID() returns for a dictionary.
CF_EXPORT CFTypeID CFDictionaryGetTypeID(void);

/// The value of the key that equals `key` (CFEqual), owned by the dictionary; null when there is none. A dictionary
/// here comes from a property list, so its keys are strings and its values never null.
const CF_EXPORT void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);

CF_EXTERN_C_END
