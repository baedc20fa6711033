#pragma once

#include "plugin/InstallerInterface.h"
#include "plugin/Steps.h"

/// An instance of the plug-in: the record that the interface pointer points to.
struct XCodInstance {
    const XCodFunctionBlock* functionBlock;  ///< what the host calls through
    CFUUIDRef factoryID;                     ///< the factory to sign off from when the instance ends, or null; owned
    SInt32 referenceCount;                   ///< a plain number: every call comes on the host's thread
};

/// The factory function that the bundle's Info.plist registers. Returns a new instance with one reference for
/// XCodPlugInTypeID(), and null for any other type or when there is no memory. `allocator` is not used.
XCOD_EXPORT void* MyFactory(CFAllocatorRef allocator, CFUUIDRef typeID);

/// 0; the host knows the bundle by the presence of this symbol.
XCOD_EXPORT std::int32_t g_cvPluginID;
