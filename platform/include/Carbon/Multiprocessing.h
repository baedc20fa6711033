#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// The number of logical processors on line; 0 when it cannot be told.
CF_EXPORT ItemCount MPProcessors(void);

CF_EXTERN_C_END
