#pragma once

#include <CoreFoundation/CFBase.h>
#include <stddef.h>

CF_EXTERN_C_BEGIN

/// Translates a control's name into its identifier: on entry `*count` is the room in `mib`, afterwards the components
/// used. 0, or -1 with errno ENOENT (unknown name) or ENOMEM (no room). The port knows "hw.cpufrequency".
CF_EXPORT int sysctlnametomib(const char* name, int* mib, size_t* count);

/// Reads a control into `oldValue` (`*oldLength` bytes of room, afterwards the bytes written). 0, or -1 with errno
/// ENOENT (unknown, or Linux does not say: "hw.cpufrequency" where no processor rate is known), ENOMEM (no room) or
/// EPERM (`newValue` is not null: nothing can be set). With a null `oldValue` it only sets `*oldLength` to the bytes
/// needed. "hw.cpufrequency" is a 64-bit number of hertz: the rate that the processor is sold with, else the highest
/// that it reaches, else the one that it runs at now.
CF_EXPORT int sysctl(const int* mib, unsigned int count, void* oldValue, size_t* oldLength, const void* newValue,
                     size_t newLength);

CF_EXTERN_C_END
