#pragma once

#include <libkern/OSAtomic.h>

#include <cstdint>

/// Operations on 32-bit words, and on pointers, that several threads use at once. The library's shared handles count
/// with them.
///
/// AtomicRead and AtomicWrite load and store a word in one piece, and nothing more (relaxed): a thread that reads a
/// pointer this way may not yet see what another thread wrote to the object before it stored the pointer.
/// AtomicReadAcquire orders what the thread does after it. AtomicIncrement and AtomicDecrement also order what it does
/// before them. AtomicCompareExchange is sequentially consistent. Nothing here fails; a word must be aligned, as every
/// variable is.
namespace Atomic {

static_assert(sizeof(unsigned int) == sizeof(std::int32_t), "the operations are those of 32-bit words");

/// The word's value.
[[nodiscard]] inline unsigned int AtomicRead(const volatile unsigned int& target) {
    return __atomic_load_n(&target, __ATOMIC_RELAXED);
}

/// The pointer's value.
[[nodiscard]] inline void* AtomicRead(void* const volatile& target) {
    return __atomic_load_n(&target, __ATOMIC_RELAXED);
}

/// The word's value. When another thread gave the word this value by an indivisible operation, the caller sees
/// everything that thread did before.
[[nodiscard]] inline unsigned int AtomicReadAcquire(const volatile unsigned int& target) {
    return __atomic_load_n(&target, __ATOMIC_ACQUIRE);
}

/// Gives the word this value.
inline void AtomicWrite(volatile unsigned int& target, unsigned int value) {
    __atomic_store_n(&target, value, __ATOMIC_RELAXED);
}

/// Gives the pointer this value.
inline void AtomicWrite(void* volatile& target, void* value) {
    __atomic_store_n(&target, value, __ATOMIC_RELAXED);
}

/// Adds 1, wrapping to 0 after the largest value; returns the new value.
inline unsigned int AtomicIncrement(volatile unsigned int& target) {
    return static_cast<unsigned int>(OSAtomicAdd32(1, reinterpret_cast<volatile std::int32_t*>(&target)));
}

/// Subtracts 1, wrapping to the largest value after 0; returns the new value. The thread that gets 0 sees everything
/// that the other threads did before they subtracted.
inline unsigned int AtomicDecrement(volatile unsigned int& target) {
    return static_cast<unsigned int>(OSAtomicAdd32(-1, reinterpret_cast<volatile std::int32_t*>(&target)));
}

/// Stores `newValue` if the word equals `comparand`; true when it stored. A full barrier either way. Mind the order of
/// the arguments: the new value comes before the one compared with.
inline bool AtomicCompareExchange(volatile unsigned int& target, unsigned int newValue, unsigned int comparand) {
    return OSAtomicCompareAndSwap32(static_cast<std::int32_t>(comparand), static_cast<std::int32_t>(newValue),
                                    reinterpret_cast<volatile std::int32_t*>(&target));
}

}  // namespace Atomic
