#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// The number of logical processors that are online, which is how many threads the machine can run at once; 0 when the
/// system does not say.
CF_EXPORT ItemCount MPProcessors(void);

CF_EXTERN_C_END
