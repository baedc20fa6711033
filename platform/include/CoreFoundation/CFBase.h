#pragma once

// The part of CoreFoundation's CFBase.h that this project uses. Every reference is an `id` to message sending too.
//
// Every function may be called from any thread, and while the static objects of any image are made. An object may be
// used by several threads at once; none can be changed after it was made.
//
// Where memory runs out, a function that makes or converts something throws std::bad_alloc (a Mac ends the process), so
// that null and false always mean what their comments say. Those that only read, retain, release or compare never
// throw.
//
// Ownership follows the Mac's rule: a function with Create or Copy in its name gives the caller one reference to
// release with CFRelease; every other function gives a reference that the callee keeps.
//
// Unless its comment says otherwise, a function must not be given a null reference or pointer. An allocator may be
// null.

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

const typedef void* CFTypeRef;
typedef unsigned long CFTypeID;
typedef unsigned long CFHashCode;
typedef long CFIndex;
typedef UInt32 CFOptionFlags;

const typedef struct __CFAllocator* CFAllocatorRef;
const typedef struct __CFArray* CFArrayRef;
const typedef struct __CFBoolean* CFBooleanRef;
typedef struct __CFBundle* CFBundleRef;
const typedef struct __CFDictionary* CFDictionaryRef;
const typedef struct __CFLocale* CFLocaleRef;
const typedef struct __CFNumber* CFNumberRef;
const typedef struct __CFString* CFStringRef;
const typedef struct __CFURL* CFURLRef;
const typedef struct __CFUUID* CFUUIDRef;
typedef CFTypeRef CFPropertyListRef;

/// `length` items from `location` on; UTF-16 units of a string, values of an array.
typedef struct {
    CFIndex location;  ///< the index of the first
    CFIndex length;    ///< how many
} CFRange;

static inline CFRange CFRangeMake(CFIndex location, CFIndex length) {
    CFRange range = {location, length};
    return range;
}

/// Stand for "the usual allocator" (null) and "do not free the bytes". Allocators are accepted and have no effect,
/// except kCFAllocatorNull as a deallocator.
const CF_EXPORT CFAllocatorRef kCFAllocatorDefault;
const CF_EXPORT CFAllocatorRef kCFAllocatorNull;

/// Adds a reference and returns `cf`. Constants, and objects with 2^31 references, are never destroyed: retaining and
/// releasing them does nothing. A null `cf` ends the process with a message, as on a Mac.
CF_EXPORT CFTypeRef CFRetain(CFTypeRef cf);

/// Gives a reference up; the last one destroys the object. A null `cf` ends the process with a message, as on a Mac.
CF_EXPORT void CFRelease(CFTypeRef cf);

/// The number of references, for tests and diagnostics only.
CF_EXPORT CFIndex CFGetRetainCount(CFTypeRef cf);

/// Whether the two objects have the same type and value: strings the same UTF-16 units, numbers exactly the same number
/// whatever they were made from. A null operand equals nothing, not even another null (a Mac would trap).
CF_EXPORT Boolean CFEqual(CFTypeRef a, CFTypeRef b);

/// A number that is the same for equal objects.
CF_EXPORT CFHashCode CFHash(CFTypeRef cf);

/// The kind of an object, to compare with CFStringGetTypeID() and its like.
CF_EXPORT CFTypeID CFGetTypeID(CFTypeRef cf);

CF_EXTERN_C_END
