#pragma once

#include <cstddef>
#include <memory>
#include <utility>

#include "CvBase/Atomic/AtomicOperations.h"

/// Deletes `p`; null is fine. A type that is only declared here does not compile.
template <typename T>
void checked_delete(T* p) {
    static_cast<void>(sizeof(T));
    delete p;
}

/// Shared ownership of one object: the handles of an object count themselves in one word, and the last one deletes it.
///
/// Every handle has a count, an empty one its own with the value 1. The count may be used by several threads at once,
/// so copies of a handle may live on different threads; one handle, and the object itself, are not protected.
template <typename T>
class shared_ptr {
public:
    /// Empty. Allocates the count.
    shared_ptr() : shared_ptr(nullptr) {}

    /// Takes over `object`, which may be null; deletes it when the count cannot be allocated.
    explicit shared_ptr(T* object) : pointer_(object), count_(newCount(object)) {}

    shared_ptr(const shared_ptr& other) noexcept : pointer_(other.pointer_), count_(other.count_) {
        Atomic::AtomicIncrement(*count_);
    }

    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment,cert-oop54-cpp): share() leaves a handle with this count alone
    shared_ptr& operator=(const shared_ptr& other) noexcept {
        share(other.pointer_, other.count_);
        return *this;
    }

    ~shared_ptr() { dispose(); }

    /// Gives up this handle's share and takes one of the object that `count` counts. Nothing happens when this handle
    /// has that count already, so that a handle can be assigned to itself.
    void share(T* pointer, volatile unsigned int* count) noexcept {
        if (count == count_) {
            return;
        }
        Atomic::AtomicIncrement(*count);
        dispose();
        pointer_ = pointer;
        count_ = count;
    }

    /// Gives up this handle's share; the last one deletes the object and the count. The pointer stays as it was but
    /// must not be followed, and count() is null: all that may come after is share() or the end of the handle.
    void dispose() noexcept {
        if (count_ == nullptr) {
            return;
        }
        const bool last = isOnlyHolder() || Atomic::AtomicDecrement(*count_) == 0;
        volatile unsigned int* const count = std::exchange(count_, nullptr);
        if (last) {
            checked_delete(pointer_);
            delete count;
        }
    }

    /// Gives up this handle's share and takes over `object`, which must be new. The other holders keep the old object.
    /// Deletes `object` and leaves the handle as it was when memory runs out.
    void replace(T* object) {
        if (isOnlyHolder()) {
            checked_delete(std::exchange(pointer_, object));
            return;
        }
        // What may fail comes first: once the share is given up, there is no way back to it.
        shared_ptr replacement(object);
        swap(replacement);
    }

    void swap(shared_ptr& other) noexcept {
        std::swap(pointer_, other.pointer_);
        std::swap(count_, other.count_);
    }

    T* get() const { return pointer_; }
    T* operator->() const { return pointer_; }
    T& operator*() const { return *pointer_; }

    /// The word that the object's handles share.
    volatile unsigned int* count() const { return count_; }

    /// How many handles share the object now; other threads may change that at any time.
    unsigned int use_count() const { return Atomic::AtomicRead(*count_); }

private:
    /// Whether no other handle shares the object: then no other thread can come to share it either, and the count can
    /// do without its indivisible operations, which take far longer than plain ones.
    bool isOnlyHolder() const { return Atomic::AtomicReadAcquire(*count_) == 1; }

    /// A new count of 1; deletes `object` when memory runs out.
    static volatile unsigned int* newCount(T* object) {
        std::unique_ptr<T> guard(object);
        volatile unsigned int* const count = new volatile unsigned int(1);
        static_cast<void>(guard.release());
        return count;
    }

    T* pointer_;
    volatile unsigned int* count_;
};

/// Shared ownership of an array made with new[]. As shared_ptr, but the count is a plain integer: all handles of an
/// array stay on one thread.
template <typename T>
class shared_array {
public:
    shared_array() : shared_array(nullptr) {}

    /// Takes over `array`, which may be null; deletes it when the count cannot be allocated.
    explicit shared_array(T* array) : pointer_(array), count_(newCount(array)) {}

    shared_array(const shared_array& other) noexcept : pointer_(other.pointer_), count_(other.count_) {
        *count_ = *count_ + 1;
    }

    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment,cert-oop54-cpp): share() leaves a handle with this count alone
    shared_array& operator=(const shared_array& other) noexcept {
        share(other.pointer_, other.count_);
        return *this;
    }

    ~shared_array() { dispose(); }

    /// As shared_ptr::share.
    void share(T* pointer, volatile unsigned int* count) noexcept {
        if (count == count_) {
            return;
        }
        *count = *count + 1;
        dispose();
        pointer_ = pointer;
        count_ = count;
    }

    /// As shared_ptr::dispose.
    void dispose() noexcept {
        if (count_ == nullptr) {
            return;
        }
        volatile unsigned int* const count = std::exchange(count_, nullptr);
        *count = *count - 1;
        if (*count == 0) {
            delete[] pointer_;
            delete count;
        }
    }

    T* get() const { return pointer_; }
    T& operator[](std::size_t index) const { return pointer_[index]; }

    /// The word that the array's handles share.
    volatile unsigned int* count() const { return count_; }

    /// How many handles share the array.
    unsigned int use_count() const { return *count_; }

private:
    /// A new count of 1; deletes `array` when memory runs out.
    static volatile unsigned int* newCount(T* array) {
        std::unique_ptr<T[]> guard(array);
        volatile unsigned int* const count = new volatile unsigned int(1);
        static_cast<void>(guard.release());
        return count;
    }

    T* pointer_;
    volatile unsigned int* count_;
};
