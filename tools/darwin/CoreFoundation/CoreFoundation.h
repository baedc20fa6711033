#pragma once

#include <CoreFoundation/CFBase.h>

extern "C" {

// CFDate.h, CFDictionary.h, CFLocale.h

typedef double CFTimeInterval;
typedef CFTimeInterval CFAbsoluteTime;
CF_EXPORT CFAbsoluteTime CFAbsoluteTimeGetCurrent(void);

const CF_EXPORT void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);

const CF_EXPORT CFStringRef kCFLocaleDecimalSeparator;
CF_EXPORT CFLocaleRef CFLocaleCopyCurrent(void);
CF_EXPORT CFTypeRef CFLocaleGetValue(CFLocaleRef locale, CFStringRef key);

// CFNumber.h

CV_ENUM(CFNumberType, CFIndex, kCFNumberSInt32Type = 3, kCFNumberIntType = 9);
CF_EXPORT CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value);
CF_EXPORT Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

// CFPreferences.h

const CF_EXPORT CFStringRef kCFPreferencesAnyUser;
const CF_EXPORT CFStringRef kCFPreferencesCurrentHost;
CF_EXPORT void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef domain, CFStringRef user,
                                     CFStringRef host);
CF_EXPORT CFPropertyListRef CFPreferencesCopyValue(CFStringRef key, CFStringRef domain, CFStringRef user,
                                                   CFStringRef host);
CF_EXPORT Boolean CFPreferencesSynchronize(CFStringRef domain, CFStringRef user, CFStringRef host);

// CFString.h

typedef UInt32 CFStringEncoding;
CV_ENUM(CFStringBuiltInEncodings, CFStringEncoding, kCFStringEncodingMacRoman = 0, kCFStringEncodingASCII = 0x0600,
        kCFStringEncodingUTF16 = 0x0100, kCFStringEncodingUTF8 = 0x08000100, kCFStringEncodingUTF32LE = 0x1c000100);

// The compiler makes the object.
#define CFSTR(text) ((CFStringRef)__builtin___CFStringMakeConstantString("" text ""))

CF_EXPORT CFTypeID CFStringGetTypeID(void);
CF_EXPORT CFStringRef CFStringCreateWithBytesNoCopy(CFAllocatorRef allocator, const UInt8* bytes, CFIndex byteCount,
                                                    CFStringEncoding encoding, Boolean isExternalRepresentation,
                                                    CFAllocatorRef contentsDeallocator);
CF_EXPORT CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text, CFStringEncoding encoding);
CF_EXPORT CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* units, CFIndex count);
CF_EXPORT CFIndex CFStringGetLength(CFStringRef string);
CF_EXPORT void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer);
CF_EXPORT Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding);
CF_EXPORT CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);

// CFURL.h

struct FSRef;
CV_ENUM(CFURLPathStyle, CFIndex, kCFURLPOSIXPathStyle = 0, kCFURLHFSPathStyle, kCFURLWindowsPathStyle);
CF_EXPORT CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef path, CFURLPathStyle style,
                                                 Boolean isDirectory);
CF_EXPORT Boolean CFURLGetFSRef(CFURLRef url, struct FSRef* ref) CV_DEPRECATED(10.0, 10.9);

// CFUUID.h

typedef struct {
    UInt8 byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7;
    UInt8 byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15;
} CFUUIDBytes;
CF_EXPORT CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef allocator, CFUUIDBytes bytes);
CF_EXPORT CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef allocator, UInt8 byte0, UInt8 byte1, UInt8 byte2,
                                                   UInt8 byte3, UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7,
                                                   UInt8 byte8, UInt8 byte9, UInt8 byte10, UInt8 byte11, UInt8 byte12,
                                                   UInt8 byte13, UInt8 byte14, UInt8 byte15);

// CFPlugIn.h

CF_EXPORT void CFPlugInRemoveInstanceForFactory(CFUUIDRef factoryID);
}
