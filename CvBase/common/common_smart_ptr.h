#pragma once

#include <cstddef>
#include <utility>

#include "CvBase/Atomic/AtomicOperations.h"

/// \file
/// Handles that share what they own. shared_ptr owns one object, shared_array an array made with new[].
///
///     const shared_ptr<std::string> text(new std::string("abc"));
///     const shared_ptr<std::string> same(text);  // both own the string; the last one destroyed deletes it
///
/// A handle is two pointers: one to what it owns, and one to the count of the handles that share it. The count is a
/// block of memory apart, because a handle takes over an object that exists already. An empty handle, which owns
/// nothing, has a count of 1 too, so that no operation needs a special case. So even an empty handle takes memory, and
/// making one can throw std::bad_alloc; copying, assigning and destroying a handle throw nothing.
///
/// Threads: copies of one shared_ptr may live, be copied and be destroyed on different threads. All copies of one
/// shared_array stay on one thread, because its count is a plain integer. One handle, and what the handles own, belong
/// to one thread at a time, as any other object does.

/// Deletes `p`, which may be null. Does not compile for a type that is only declared, not defined.
template <typename T>
void checked_delete(T* p) {
    static_cast<void>(sizeof(T));
    delete p;
}

namespace HandleDetail {

/// How the handles of one object count themselves: on any thread.
struct SharedObject {
    /// Counts one handle more.
    static void add(volatile unsigned int& count) { Atomic::AtomicIncrement(count); }

    /// Whether no other handle shares the object. No other thread can come to share it then: it would need a handle to
    /// copy.
    static bool isOnly(const volatile unsigned int& count) { return Atomic::AtomicReadAcquire(count) == 1; }

    /// Takes one handle away; true for the last one. The last one needs no indivisible operation, which takes far
    /// longer than a plain read.
    static bool remove(volatile unsigned int& count) { return isOnly(count) || Atomic::AtomicDecrement(count) == 0; }

    /// Deletes what the last handle owned.
    template <typename T>
    static void destroy(T* object) {
        checked_delete(object);
    }
};

/// How the handles of one array count themselves: on one thread.
struct SharedArray {
    /// Counts one handle more.
    static void add(volatile unsigned int& count) { count = count + 1; }

    /// Takes one handle away; true for the last one.
    static bool remove(volatile unsigned int& count) {
        count = count - 1;
        return count == 0;
    }

    /// Deletes what the last handle owned.
    template <typename T>
    static void destroy(T* array) {
        delete[] array;
    }
};

/// What shared_ptr and shared_array have in common. `Sharing` is one of the two above.
template <typename T, typename Sharing>
class SharedHandle {
public:
    /// Empty.
    SharedHandle() : SharedHandle(nullptr) {}

    /// Takes over `owned`, which may be null. When there is no memory for the count, deletes it and throws
    /// std::bad_alloc.
    explicit SharedHandle(T* owned) : pointer_(owned), count_(newCount(owned)) {}

    /// Shares what `other` owns. A move is a copy, since every handle has a count.
    SharedHandle(const SharedHandle& other) noexcept : pointer_(other.pointer_), count_(other.count_) {
        Sharing::add(*count_);
    }

    /// As share() with what `other` owns.
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment,cert-oop54-cpp): share() leaves a handle with this count alone
    SharedHandle& operator=(const SharedHandle& other) noexcept {
        share(other.pointer_, other.count_);
        return *this;
    }

    ~SharedHandle() { dispose(); }

    /// Gives up this handle's share and joins the handles of `pointer`, which `count` counts. Nothing happens when this
    /// handle has that count already, so that a handle can be assigned to itself.
    void share(T* pointer, volatile unsigned int* count) noexcept {
        if (count == count_) {
            return;
        }
        Sharing::add(*count);
        dispose();
        pointer_ = pointer;
        count_ = count;
    }

    /// Gives up this handle's share before the handle is destroyed; the last share deletes what is owned, and the
    /// count. get() stays as it was but must not be followed, and count() is null. After that the handle may be
    /// disposed of again, which does nothing, given a share, or destroyed, but not copied.
    void dispose() noexcept {
        if (count_ == nullptr) {
            return;
        }
        const bool isLast = Sharing::remove(*count_);
        volatile unsigned int* const count = std::exchange(count_, nullptr);
        if (isLast) {
            Sharing::destroy(pointer_);
            delete count;
        }
    }

    /// Exchanges what the two handles own. No count changes.
    void swap(SharedHandle& other) noexcept {
        std::swap(pointer_, other.pointer_);
        std::swap(count_, other.count_);
    }

    /// What is owned; null for an empty handle. Valid as long as a handle owns it.
    [[nodiscard]] T* get() const { return pointer_; }

    /// The count of the handles, which belongs to all of them; share() takes it together with get(). Never write to it.
    /// Null after dispose().
    [[nodiscard]] volatile unsigned int* count() const { return count_; }

    /// How many handles share what is owned now, at least 1. Other threads may change it at any time. Do not call after
    /// dispose().
    [[nodiscard]] unsigned int use_count() const { return Atomic::AtomicRead(*count_); }

protected:
    /// Deletes what is owned and takes over `owned` in its place. Only for a handle that shares with no other.
    void replaceOwned(T* owned) { Sharing::destroy(std::exchange(pointer_, owned)); }

private:
    /// A new count of 1. When memory runs out, deletes `owned`, which no handle will own then.
    static volatile unsigned int* newCount(T* owned) {
        try {
            return new volatile unsigned int(1);
        } catch (...) {
            Sharing::destroy(owned);
            throw;
        }
    }

    T* pointer_;
    volatile unsigned int* count_;
};

}  // namespace HandleDetail

/// Shared ownership of one object, on any number of threads.
template <typename T>
class shared_ptr : public HandleDetail::SharedHandle<T, HandleDetail::SharedObject> {
public:
    /// Empty.
    shared_ptr() = default;

    /// Takes over `object`, which may be null. When there is no memory for the count, deletes it and throws
    /// std::bad_alloc.
    explicit shared_ptr(T* object) : HandleDetail::SharedHandle<T, HandleDetail::SharedObject>(object) {}

    /// Gives up this handle's share and takes over `object`, which no other handle may own. Other handles of the old
    /// object keep it. When there is no memory, deletes `object`, leaves the handle as it was and throws
    /// std::bad_alloc.
    void replace(T* object) {
        if (HandleDetail::SharedObject::isOnly(*this->count())) {
            this->replaceOwned(object);
            return;
        }
        // What may fail comes first: once the share is given up, there is no way back to it.
        shared_ptr replacement(object);
        this->swap(replacement);
    }

    /// The object. Undefined for an empty handle.
    T* operator->() const { return this->get(); }
    T& operator*() const { return *this->get(); }
};

/// Shared ownership of an array, on one thread. `T` is the type of an element.
template <typename T>
class shared_array : public HandleDetail::SharedHandle<T, HandleDetail::SharedArray> {
public:
    /// Empty.
    shared_array() = default;

    /// Takes over `array`, made with new[], which may be null. When there is no memory for the count, deletes it and
    /// throws std::bad_alloc.
    explicit shared_array(T* array) : HandleDetail::SharedHandle<T, HandleDetail::SharedArray>(array) {}

    /// The element at `index`, which is not checked. Undefined for an empty handle.
    T& operator[](std::size_t index) const { return this->get()[index]; }
};

static_assert(sizeof(shared_ptr<int>) == 2 * sizeof(void*) && sizeof(shared_array<int>) == 2 * sizeof(void*),
              "a handle is two pointers");
