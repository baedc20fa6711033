#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef int kern_return_t;

enum { KERN_SUCCESS = 0, KERN_INVALID_ARGUMENT = 4 };

/// What a count of mach_absolute_time is multiplied by (numer / denom) to give nanoseconds; 1/1 here.
struct mach_timebase_info {
    uint32_t numer;  ///< nanoseconds
    uint32_t denom;  ///< in so many counts
};
typedef struct mach_timebase_info mach_timebase_info_data_t;
typedef struct mach_timebase_info* mach_timebase_info_t;

// The Mac gives the structure and the function one name.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow"
/// Fills `info`; KERN_INVALID_ARGUMENT when that is null, else KERN_SUCCESS.
CF_EXPORT kern_return_t mach_timebase_info(mach_timebase_info_t info);
#pragma GCC diagnostic pop

/// A count that only grows, from an unspecified start (CLOCK_MONOTONIC: it stands still while the machine sleeps).
CF_EXPORT uint64_t mach_absolute_time(void);

CF_EXTERN_C_END
