#pragma once

// CoreFoundation as a Mac's own headers declare it, as far as this project calls it, for tools/check-darwin: what the
// port declares more simply stands here as on a Mac wherever a source could notice the difference.

#include <MacTypes.h>
#include <stdbool.h>
#include <stddef.h>

/// There from release `from` on; systems from `version` on warn about a use.
#define CV_DEPRECATED(from, version) __attribute__((availability(macosx, introduced = from, deprecated = version)))

/// An enumeration: a type of its own with the SDK of 10.9, with that of 10.7 a number and constants.
#if __LP64__
#define CV_ENUM(name, type, ...) enum name : type { __VA_ARGS__ }
#else
#define CV_ENUM(name, type, ...) \
    typedef type name;           \
    enum { __VA_ARGS__ }
#endif

#define CF_EXPORT extern
#define CF_INLINE static __inline__ __attribute__((always_inline))

extern "C" {

const typedef void* CFTypeRef;
typedef unsigned long CFTypeID;
typedef unsigned long CFOptionFlags;
typedef unsigned long CFHashCode;
typedef signed long CFIndex;

const typedef struct __CFAllocator* CFAllocatorRef;
const typedef struct __CFDictionary* CFDictionaryRef;
const typedef struct __CFLocale* CFLocaleRef;
const typedef struct __CFNumber* CFNumberRef;
const typedef struct __CFString* CFStringRef;
const typedef struct __CFURL* CFURLRef;
const typedef struct __CFUUID* CFUUIDRef;
typedef CFTypeRef CFPropertyListRef;

typedef struct {
    CFIndex location;
    CFIndex length;
} CFRange;

CF_INLINE CFRange CFRangeMake(CFIndex location, CFIndex length) {
    CFRange range;
    range.location = location;
    range.length = length;
    return range;
}

const CF_EXPORT CFAllocatorRef kCFAllocatorDefault;
const CF_EXPORT CFAllocatorRef kCFAllocatorSystemDefault;
const CF_EXPORT CFAllocatorRef kCFAllocatorNull;

CF_EXPORT CFTypeRef CFRetain(CFTypeRef cf);
CF_EXPORT void CFRelease(CFTypeRef cf);
CF_EXPORT Boolean CFEqual(CFTypeRef a, CFTypeRef b);
CF_EXPORT CFTypeID CFGetTypeID(CFTypeRef cf);
}
