#pragma once

// What every CoreFoundation object is: a class and an atomic count. The objects that message sending reaches, and the
// classes themselves, are such objects too, so that a CFStringRef is an `id` as on a Mac.

#include <CoreFoundation/CFBase.h>
#include <objc/objc.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>

struct objc_object {
    /// A count from this on up never changes again. An object that is made with it is immortal, and one whose count
    /// reaches it becomes so: better kept for ever than freed while somebody holds it.
    static constexpr std::uint32_t IMMORTAL = 0x80000000;

    /// A new object has one reference, the maker's.
    constexpr explicit objc_object(const objc_class& type, std::uint32_t references = 1) noexcept
        : isa(&type), references_(references) {}
    objc_object(const objc_object&) = delete;
    objc_object& operator=(const objc_object&) = delete;

    /// Adds a reference; false when the last one is given up already.
    bool retain() const noexcept;

    /// Gives a reference up; the last one destroys the object.
    void release() const noexcept;

    std::uint32_t references() const noexcept { return references_.load(std::memory_order_relaxed); }

    const objc_class* const isa;

protected:
    ~objc_object() = default;

private:
    mutable std::atomic<std::uint32_t> references_;
};

namespace cv {

/// What CFRelease, CFEqual and CFHash do with the objects of one class. Without `equal` an object equals only itself.
struct Behaviour {
    void (*destroy)(const objc_object* object) = nullptr;
    bool (*equal)(const objc_object& a, const objc_object& b) = nullptr;
    CFHashCode (*hash)(const objc_object& object) = nullptr;
};

/// The behaviour of objects that are deleted as a T and equal themselves only.
template <typename T>
constexpr Behaviour identityOf() {
    return {[](const objc_object* object) { delete static_cast<const T*>(object); }, nullptr, nullptr};
}

/// The behaviour of objects that are deleted as a T and compared by their values: T has == and hash().
template <typename T>
constexpr Behaviour valueOf() {
    return {
        identityOf<T>().destroy,
        [](const objc_object& a, const objc_object& b) { return static_cast<const T&>(a) == static_cast<const T&>(b); },
        [](const objc_object& object) { return static_cast<const T&>(object).hash(); }};
}

/// The function of the method that `selector` names, null when the class has none of its own.
using MethodTable = IMP (*)(std::string_view selector);

}  // namespace cv

/// What the objects of one kind share. Classes are immortal objects themselves, each of a class (its metaclass) whose
/// methods are the class methods.
struct objc_class : objc_object {
    constexpr objc_class(const char* className, const objc_class& metaclass, const objc_class* parent,
                         cv::MethodTable ownMethods, cv::Behaviour ownBehaviour = {}) noexcept
        : objc_object(metaclass, IMMORTAL),
          name(className),
          superclass(parent),
          methods(ownMethods),
          behaviour(ownBehaviour) {}

    const char* const name;
    const objc_class* const superclass;
    const cv::MethodTable methods;  ///< may be null
    const cv::Behaviour behaviour;
};

// Compare and exchange, not add and subtract: no count passes IMMORTAL for an instant only.

inline bool objc_object::retain() const noexcept {
    std::uint32_t count = references();
    do {
        if (count == 0 || count >= IMMORTAL) {
            return count != 0;
        }
    } while (!references_.compare_exchange_weak(count, count + 1, std::memory_order_relaxed));
    return true;
}

inline void objc_object::release() const noexcept {
    std::uint32_t count = references();
    do {
        if (count == 0 || count >= IMMORTAL) {
            return;
        }
    } while (!references_.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel));
    if (count == 1 && isa->behaviour.destroy != nullptr) {
        isa->behaviour.destroy(this);
    }
}

namespace cv {

/// NSObject, the class above all others, and its metaclass.
extern const objc_class OBJECT_CLASS;
extern const objc_class OBJECT_METACLASS;

/// The object behind a reference.
template <typename T = objc_object>
const T& object(CFTypeRef reference) {
    return static_cast<const T&>(*static_cast<const objc_object*>(reference));
}

/// The object behind the reference when it is one of `type`; null for another one and for a null reference.
template <typename T>
const T* objectOf(const objc_class& type, CFTypeRef reference) {
    return reference != nullptr && object(reference).isa == &type ? &object<T>(reference) : nullptr;
}

struct ReleaseObject {
    void operator()(const objc_object* object) const noexcept { object->release(); }
};

/// Owns one reference to an object of the port, or none.
template <typename T>
using Owned = std::unique_ptr<const T, ReleaseObject>;

/// A further reference to an object that belongs to somebody else.
template <typename T>
Owned<T> retained(const T& object) {
    object.retain();
    return Owned<T>(&object);
}

/// The type ID of the objects of a class.
inline CFTypeID typeID(const objc_class& type) {
    return reinterpret_cast<CFTypeID>(&type);
}

/// Ends the process with a message on standard error, where a Mac would end it too.
[[noreturn]] void fail(const char* function, const char* reason);

}  // namespace cv
