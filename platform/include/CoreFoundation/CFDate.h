#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// Seconds.
typedef double CFTimeInterval;

/// Seconds since 1 January 2001, 00:00:00 UTC.
typedef CFTimeInterval CFAbsoluteTime;

/// The wall clock's time now, to the microsecond or better.
CF_EXPORT CFAbsoluteTime CFAbsoluteTimeGetCurrent(void);

CF_EXTERN_C_END
