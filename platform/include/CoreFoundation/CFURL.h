#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

struct FSRef;

typedef CFIndex CFURLPathStyle;

enum { kCFURLPOSIXPathStyle = 0 };

/// A new file URL for a path; null for a null or empty path or another path style. Any byte but NUL may stand in the
/// path. `isDirectory` says how the URL is written, not what the path must name.
CF_EXPORT CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef path, CFURLPathStyle style,
                                                 Boolean isDirectory);

/// The same from `byteCount` bytes of a path in UTF-8.
CF_EXPORT CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8* path,
                                                           CFIndex byteCount, Boolean isDirectory);

/// Writes the URL's path, without a trailing slash, and a NUL; false when it needs more than `bufferSize` bytes. A URL
/// has no base here, so `resolveAgainstBase` has no effect.
CF_EXPORT Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase, UInt8* buffer,
                                                   CFIndex bufferSize);

/// Finds the object that the URL's path names, following symbolic links, whether it is a file or a folder and however
/// the URL is written; false, with `ref` untouched, when there is none.
CF_EXPORT Boolean CFURLGetFSRef(CFURLRef url, struct FSRef* ref);

CF_EXTERN_C_END
