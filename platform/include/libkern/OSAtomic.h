#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// Adds `amount` to `*value` in one indivisible step (wrapping) and returns the new value. On a Mac it gives no memory
/// barrier; here it is an acquire-release operation, which is what a shared count needs on every processor.
static inline int32_t OSAtomicAdd32(int32_t amount, volatile int32_t* value) {
    return __atomic_add_fetch(value, amount, __ATOMIC_ACQ_REL);
}

/// If `*value` is `oldValue`, stores `newValue`, in one indivisible step; true when it stored. Sequentially consistent.
static inline bool OSAtomicCompareAndSwap32(int32_t oldValue, int32_t newValue, volatile int32_t* value) {
    return __atomic_compare_exchange_n(value, &oldValue, newValue, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
}

CF_EXTERN_C_END
