#pragma once

#include <CoreFoundation/CFPlugInCOM.h>
#include <CoreFoundation/CoreFoundation.h>

#include <array>

#include "plugin/ParamBlock.h"

// What a program that loads the plug-in, its host, needs to talk to it: identifiers, exported names and the layout of
// the interface table.
//
// The host makes an instance of the plug-in type (CFPlugInInstanceCreate), asks it for the installer interface
// (QueryInterface, which adds a reference), calls XCodMain once for each step, and gives up each reference with
// Release. An instance is a pointer to a pointer to the table.
//
// InstallerInterface.cmake reads the texts of this file for the bundle's Info.plist and for the linker.

/// The plug-in type.
constexpr char XCOD_PLUGIN_TYPE_ID[] = "5CD9484B-4A86-4CA2-A79A-1525A3B5F6E8";

/// The installer interface.
constexpr char XCOD_INTERFACE_ID[] = "00D5FBFE-3D3D-40E2-9DCB-92ED695834F8";

/// The names that the bundle exports, and no others: first the factory function, which its Info.plist registers, and
/// last a 32-bit integer, by which a host knows the bundle.
constexpr const char* XCOD_EXPORTS[] = {"MyFactory", "PostInstall", "PreInstall", "g_cvPluginID"};

/// The interface table: the four slots of IUnknown, then the entry of the steps.
struct XCodFunctionBlock {
    IUNKNOWN_C_GUTS;

    /// Runs the step that the block's selector names. The outcome is in `resultFlags`. Exceptions that a step lets out
    /// travel on to the caller.
    void (*XCodMain)(XCodParamBlock* block);
};

static_assert(sizeof(XCodFunctionBlock) == 5 * sizeof(void*));

/// The identifier with the text form `text`, in capitals. Every call gives the same object, which is not to be
/// released.
inline CFUUIDRef XCodConstantID(const char* text) {
    const auto valueOf = [](char digit) { return digit <= '9' ? digit - '0' : digit - 'A' + 10; };
    std::array<UInt8, 16> bytes{};
    for (UInt8& byte : bytes) {
        text += *text == '-' ? 1 : 0;
        byte = static_cast<UInt8>(16 * valueOf(text[0]) + valueOf(text[1]));
        text += 2;
    }
    return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, bytes[0], bytes[1], bytes[2], bytes[3], bytes[4],
                                          bytes[5], bytes[6], bytes[7], bytes[8], bytes[9], bytes[10], bytes[11],
                                          bytes[12], bytes[13], bytes[14], bytes[15]);
}

/// The plug-in type as an object that is not to be released.
inline CFUUIDRef XCodPlugInTypeID() {
    return XCodConstantID(XCOD_PLUGIN_TYPE_ID);
}

/// The installer interface as an object that is not to be released.
inline CFUUIDRef XCodInterfaceID() {
    return XCodConstantID(XCOD_INTERFACE_ID);
}
