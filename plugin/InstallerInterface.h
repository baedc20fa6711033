#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "plugin/ParamBlock.h"

// What an installer host needs to talk to the plug-in: identifiers and the shape of the interface table.
//
// The host makes an instance of the plug-in type (CFPlugInInstanceCreate), asks it for the installer interface
// (QueryInterface, which adds a reference), calls XCodMain once for each step, and gives up each reference with
// Release. An instance is a pointer to a pointer to the table.

/// The interface table: the four slots of IUnknown, then the entry of the steps.
struct XCodFunctionBlock {
    IUNKNOWN_C_GUTS;

    /// Runs the step that the block's selector names. The outcome is in `resultFlags`. Exceptions that a step lets out
    /// travel on to the caller.
    void (*XCodMain)(XCodParamBlock* block);
};

static_assert(sizeof(XCodFunctionBlock) == 5 * sizeof(void*));

/// The plug-in type, 5CD9484B-4A86-4CA2-A79A-1525A3B5F6E8. Not to be released.
inline CFUUIDRef XCodPlugInTypeID() {
    return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x4C, 0xA2, 0xA7,
                                          0x9A, 0x15, 0x25, 0xA3, 0xB5, 0xF6, 0xE8);
}

/// The installer interface, 00D5FBFE-3D3D-40E2-9DCB-92ED695834F8. Not to be released.
inline CFUUIDRef XCodInterfaceID() {
    return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x00, 0xD5, 0xFB, 0xFE, 0x3D, 0x3D, 0x40, 0xE2, 0x9D,
                                          0xCB, 0x92, 0xED, 0x69, 0x58, 0x34, 0xF8);
}
