#pragma once

#include <cstdint>
#include <map>

#include "CvBase/common/common_string.h"

#pragma GCC visibility push(default)

class FilePath;

/// \file
/// What a program can ask about the process that it runs in. No function here fails: for what the platform does not
/// know, they return an empty text or the value named.

namespace Util {

/// The name of the running program as the Process Manager knows it, at most 255 bytes.
[[nodiscard]] String GetCurrentProcessName();

/// The name to show to the user: CFBundleDisplayName of the main bundle, else its CFBundleName, else the process name.
/// A value that is empty, or is not a text, counts as missing. The caller must hold an autorelease pool
/// (cv::AutoreleasePool), here and for the next function.
[[nodiscard]] String GetCurrentProcessDisplayName();

/// CFBundleVersion of the main bundle; empty when it has none.
[[nodiscard]] String GetCurrentProcessDisplayVersion();

/// The number by which the system knows the process (its pid).
[[nodiscard]] std::int32_t GetCurrentProcessID();

/// How many threads this machine can run at once: its logical processors; at least 1.
[[nodiscard]] std::int32_t GetNumLogicalProcessors();

/// Whether a dialog may stop the user's other work: always true on this platform.
[[nodiscard]] bool IsModalDialogAllowed();

/// The bytes that the heap has given out: always 0, "not known", on this platform.
[[nodiscard]] std::uint64_t GetTotalHeapAllocatedBytes();

/// A function of a map file, at its address.
struct MapFileFunctionInfo {
    String name;            ///< as the map file writes it
    unsigned int size = 0;  ///< bytes
};

/// The place that a return address leads to.
struct ReturnAddressInfo {
    String functionName;      ///< as the map file writes it
    unsigned int offset = 0;  ///< bytes from the function's start
};

/// @name Call stacks and map files
/// @{

/// For the platforms that have them. Here a call stack has no frames, so `*frameCount`, which must not be null, becomes
/// 0; the two others always return false and change nothing.
void GetCallStack(unsigned int maxFrames, unsigned int* frameCount);
bool ParseMapFile(std::map<unsigned int, MapFileFunctionInfo>& functions, const FilePath& path,
                  unsigned int baseAddress);
bool MapFileLookupReturnAddress(ReturnAddressInfo& info, unsigned int address,
                                const std::map<unsigned int, MapFileFunctionInfo>& functions);
/// @}

}  // namespace Util

#pragma GCC visibility pop
