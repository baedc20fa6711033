#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFUUID.h>

CF_EXTERN_C_BEGIN

/// On a Mac a CFPlugInRef is a CFBundleRef whose bundle registers factories.
typedef CFBundleRef CFPlugInRef;

/// The keys of Info.plist that register a plug-in statically: CFPlugInFactories maps a factory's identifier to the name
/// of its function, CFPlugInTypes a type's identifier to the array of the factories that make it, and
/// CFPlugInDynamicRegistration is the string "NO".
const CF_EXPORT CFStringRef kCFPlugInDynamicRegistrationKey;
const CF_EXPORT CFStringRef kCFPlugInFactoriesKey;
const CF_EXPORT CFStringRef kCFPlugInTypesKey;

/// A new reference to the plug-in at `url`, its factories registered to the end of the process; the code is not loaded
/// yet. Null, with one line on standard error, when there is no bundle, it registers no factory or no type, anything in
/// its registration is malformed, or another plug-in has registered one of its factories.
CF_EXPORT CFPlugInRef CFPlugInCreate(CFAllocatorRef allocator, CFURLRef url);

/// The bundle that the plug-in is, not retained.
CF_EXPORT CFBundleRef CFPlugInGetBundle(CFPlugInRef plugIn);

/// A new array of the factories (CFUUIDRef) that the plug-in registers for a type, empty when there is none; null for a
/// null argument.
CF_EXPORT CFArrayRef CFPlugInFindFactoriesForPlugInTypeInPlugIn(CFUUIDRef typeID, CFPlugInRef plugIn);

/// Loads the factory's code if need be, calls its function with `allocator` and `typeID`, and returns what that
/// returned: an instance with one reference (to give up through its Release), or null. Null, too, for a factory that is
/// not registered, is not registered for this type, or whose code cannot be loaded.
CF_EXPORT void* CFPlugInInstanceCreate(CFAllocatorRef allocator, CFUUIDRef factoryID, CFUUIDRef typeID);

/// Keep a count of a factory's living instances. The port never unloads code, so the count has no further effect; a
/// remove without an add is reported on standard error.
CF_EXPORT void CFPlugInAddInstanceForFactory(CFUUIDRef factoryID);
CF_EXPORT void CFPlugInRemoveInstanceForFactory(CFUUIDRef factoryID);

CF_EXTERN_C_END
