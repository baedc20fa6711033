#pragma once

// The part of CoreFoundation's CFBase.h that this project uses. Every CoreFoundation object here is a Foundation
// object (toll-free bridged): a CFTypeRef is an Objective-C `id`, CFRetain sends retain, CFRelease sends release.
//
// Ownership follows the Mac's rule: a function with Create or Copy in its name gives the caller one reference to
// release with CFRelease; every other function gives a reference that the callee keeps.

#include <MacTypes.h>

#if defined(__cplusplus)
#define CF_EXTERN_C_BEGIN extern "C" {
#define CF_EXTERN_C_END }
#else
#define CF_EXTERN_C_BEGIN
#define CF_EXTERN_C_END
#endif

#define CF_EXPORT extern __attribute__((visibility("default")))

CF_EXTERN_C_BEGIN

typedef const void* CFTypeRef;
typedef unsigned long CFTypeID;
typedef unsigned long CFHashCode;
typedef long CFIndex;
typedef UInt32 CFOptionFlags;

typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFArray* CFArrayRef;
typedef struct __CFBundle* CFBundleRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef const struct __CFLocale* CFLocaleRef;
typedef const struct __CFNumber* CFNumberRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFURL* CFURLRef;
typedef const struct __CFUUID* CFUUIDRef;
typedef CFTypeRef CFPropertyListRef;

typedef struct {
    CFIndex location;
    CFIndex length;
} CFRange;

static inline CFRange CFRangeMake(CFIndex location, CFIndex length) {
    CFRange range = {location, length};
    return range;
}

/// Stand for "the usual allocator" (null) and "do not free the bytes". Allocators are accepted and, kCFAllocatorNull
/// as a deallocator apart, have no effect.
CF_EXPORT const CFAllocatorRef kCFAllocatorDefault;
CF_EXPORT const CFAllocatorRef kCFAllocatorNull;

/// Adds a reference and returns `cf`. A null `cf` ends the process with a message, as on a Mac.
CF_EXPORT CFTypeRef CFRetain(CFTypeRef cf);

/// Gives a reference up; the last one destroys the object. A null `cf` ends the process with a message, as on a Mac.
CF_EXPORT void CFRelease(CFTypeRef cf);

/// The number of references, for tests and diagnostics only.
CF_EXPORT CFIndex CFGetRetainCount(CFTypeRef cf);

/// Whether the two objects have the same type and value. A null operand equals nothing, not even another null (a Mac
/// would trap).
CF_EXPORT Boolean CFEqual(CFTypeRef a, CFTypeRef b);

/// The kind of an object, to compare with CFStringGetTypeID() and its like.
CF_EXPORT CFTypeID CFGetTypeID(CFTypeRef cf);

CF_EXTERN_C_END
