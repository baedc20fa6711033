#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// A new reference to the bundle at `url` (X.bundle with Contents/Info.plist); null when there is no bundle there or
/// its property list cannot be read. One path gives one object as long as it lives.
CF_EXPORT CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef url);

/// The parsed Info.plist, owned by the bundle; never null for a bundle that was created.
CF_EXPORT CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle);

/// The text of CFBundleIdentifier in Info.plist, owned by the bundle; null when there is none.
CF_EXPORT CFStringRef CFBundleGetIdentifier(CFBundleRef bundle);

/// Loads the bundle's code (Contents/MacOS/NAME on a Mac, Contents/Linux/NAME here, with the name in Info.plist) if it
/// is not loaded; false, with one line on standard error, when that fails. Code that was loaded stays in the process
/// until it ends.
CF_EXPORT Boolean CFBundleLoadExecutable(CFBundleRef bundle);

/// The address of an exported function or variable of the bundle's code, which is loaded first; null when it has none
/// of that name.
CF_EXPORT void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef name);
CF_EXPORT void* CFBundleGetDataPointerForName(CFBundleRef bundle, CFStringRef name);

CF_EXTERN_C_END
