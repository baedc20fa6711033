#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// The key of the text between the whole and the fractional digits of a number.
const CF_EXPORT CFStringRef kCFLocaleDecimalSeparator;

/// The user's locale, from the environment (LC_ALL, LC_NUMERIC, LANG); never null.
CF_EXPORT CFLocaleRef CFLocaleCopyCurrent(void);

/// The value at `key`, owned by the locale; null when the locale has none.
CF_EXPORT CFTypeRef CFLocaleGetValue(CFLocaleRef locale, CFStringRef key);

CF_EXTERN_C_END
