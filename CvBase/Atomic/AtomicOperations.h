#pragma once

#include <libkern/OSAtomic.h>

#include <cstdint>

/// Operations on words that several threads use at once: the shared counts of the handles rest on them.
///
/// AtomicRead and AtomicWrite are plain accesses of the processor (an aligned word is loaded and stored in one piece)
/// and order nothing: a thread that reads a pointer this way may see it before what it points to. The others are
/// indivisible.
namespace Atomic {

static_assert(sizeof(unsigned int) == sizeof(std::int32_t), "the operations are those of 32-bit words");

/// The word's value.
inline unsigned int AtomicRead(const volatile unsigned int& target) {
    return __atomic_load_n(&target, __ATOMIC_RELAXED);
}

/// The pointer's value.
inline void* AtomicRead(void* const volatile& target) {
    return __atomic_load_n(&target, __ATOMIC_RELAXED);
}

/// The word's value. What a thread did before it gave the word this value with one of the indivisible operations has
/// happened for the caller.
inline unsigned int AtomicReadAcquire(const volatile unsigned int& target) {
    return __atomic_load_n(&target, __ATOMIC_ACQUIRE);
}

inline void AtomicWrite(volatile unsigned int& target, unsigned int value) {
    __atomic_store_n(&target, value, __ATOMIC_RELAXED);
}

inline void AtomicWrite(void* volatile& target, void* value) {
    __atomic_store_n(&target, value, __ATOMIC_RELAXED);
}

/// Adds 1, wrapping to 0 after the largest value; returns the new value.
inline unsigned int AtomicIncrement(volatile unsigned int& target) {
    return static_cast<unsigned int>(OSAtomicAdd32(1, reinterpret_cast<volatile std::int32_t*>(&target)));
}

/// Subtracts 1, wrapping to the largest value after 0; returns the new value. What the other holders of a count did
/// before they gave up their shares has happened, for the thread that gets 0.
inline unsigned int AtomicDecrement(volatile unsigned int& target) {
    return static_cast<unsigned int>(OSAtomicAdd32(-1, reinterpret_cast<volatile std::int32_t*>(&target)));
}

/// Stores `newValue` if the word equals `comparand`; true when it stored. A full barrier either way.
inline bool AtomicCompareExchange(volatile unsigned int& target, unsigned int newValue, unsigned int comparand) {
    return OSAtomicCompareAndSwap32(static_cast<std::int32_t>(comparand), static_cast<std::int32_t>(newValue),
                                    reinterpret_cast<volatile std::int32_t*>(&target));
}

}  // namespace Atomic
