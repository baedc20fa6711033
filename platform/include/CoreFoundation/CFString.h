#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef UInt32 CFStringEncoding;

/// The encodings of bytes. The port knows no others.
enum {
    kCFStringEncodingMacRoman = 0,
    kCFStringEncodingASCII = 0x0600,
    kCFStringEncodingUTF8 = 0x08000100,
    kCFStringEncodingUTF16 = 0x0100,
    kCFStringEncodingUTF32LE = 0x1c000100
};

/// What CFGetTypeID() returns for a string.
CF_EXPORT CFTypeID CFStringGetTypeID(void);

/// An immortal string with the text of the UTF-8 literal; the same literal text gives the same object. CFRelease on it
/// does nothing.
#define CFSTR(literal) __CFStringMakeConstantString("" literal "")
CF_EXPORT CFStringRef __CFStringMakeConstantString(const char* utf8);

/// A new string from NUL-terminated bytes in `encoding`, one of UTF-8, ASCII and Mac OS Roman; null when the bytes are
/// not valid in it (strictly: overlong forms, surrogates and values above U+10FFFF are not valid UTF-8), `bytes` is
/// null, or the encoding is another. One leading byte order mark (EF BB BF) is skipped.
CF_EXPORT CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* bytes, CFStringEncoding encoding);

/// A new string of `count` UTF-16 units as they are, unpaired surrogates included.
CF_EXPORT CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* units, CFIndex count);

/// A new string from `byteCount` bytes in any encoding above; null when they are not valid in it, which an unpaired
/// surrogate is in none. A leading byte order mark is skipped in UTF-8 and tells the byte order in UTF-16, else the
/// processor's; in UTF-32LE it is a character of the text. The port copies the bytes at once, so they need not outlive
/// the call; `contentsDeallocator` must be kCFAllocatorNull (the caller keeps the bytes).
CF_EXPORT CFStringRef CFStringCreateWithBytesNoCopy(CFAllocatorRef allocator, const UInt8* bytes, CFIndex byteCount,
                                                    CFStringEncoding encoding, Boolean isExternalRepresentation,
                                                    CFAllocatorRef contentsDeallocator);

/// The length in UTF-16 units.
CF_EXPORT CFIndex CFStringGetLength(CFStringRef string);

/// Copies the units of `range`, which must lie inside the string, to `units`.
CF_EXPORT void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* units);

/// Writes the text and a terminating NUL in `encoding`, one of UTF-8, ASCII and Mac OS Roman. All or nothing: false,
/// with the buffer's contents undefined, when the text has a character that the encoding lacks, has an unpaired
/// surrogate, or needs more than `bufferSize` bytes with its NUL, or the encoding is another. U+FEFF is written like
/// any other character.
CF_EXPORT Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding);

/// The most bytes that `length` UTF-16 units can take in `encoding`, without a terminating NUL: 3 a unit for UTF-8, 1
/// for the 8-bit encodings, 2 for UTF-16, 4 for UTF-32; -1 when that does not fit a CFIndex.
CF_EXPORT CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);

CF_EXTERN_C_END
