#include <CoreFoundation/CFBase.h>

#include <cstdio>
#include <cstdlib>
#include <limits>

#include "platform/CoreFoundation/Object.h"

namespace {

/// An allocator has no state here: what matters is which one it is.
const objc_class ALLOCATOR_CLASS("__NSCFAllocator", cv::OBJECT_METACLASS, &cv::OBJECT_CLASS, nullptr);

}  // namespace

struct __CFAllocator : objc_object {
    constexpr __CFAllocator() noexcept : objc_object(ALLOCATOR_CLASS, IMMORTAL) {}
};

namespace {

const __CFAllocator NULL_ALLOCATOR;

}  // namespace

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFAllocatorRef kCFAllocatorNull = &NULL_ALLOCATOR;

namespace cv {

void fail(const char* function, const char* reason) {
    std::fprintf(stderr, "*** %s: %s ***\n", function, reason);
    std::abort();
}

}  // namespace cv

CFTypeRef CFRetain(CFTypeRef cf) {
    if (cf == nullptr) {
        cv::fail("CFRetain", "called with NULL");
    }
    cv::object(cf).retain();
    return cf;
}

void CFRelease(CFTypeRef cf) {
    if (cf == nullptr) {
        cv::fail("CFRelease", "called with NULL");
    }
    cv::object(cf).release();
}

CFIndex CFGetRetainCount(CFTypeRef cf) {
    const std::uint32_t count = cv::object(cf).references();
    return count < objc_object::IMMORTAL ? static_cast<CFIndex>(count) : std::numeric_limits<CFIndex>::max();
}

Boolean CFEqual(CFTypeRef a, CFTypeRef b) {
    if (a == nullptr || b == nullptr) {
        return false;
    }
    const objc_class& type = *cv::object(a).isa;
    return a == b || (cv::object(b).isa == &type && type.behaviour.equal != nullptr &&
                      type.behaviour.equal(cv::object(a), cv::object(b)));
}

CFHashCode CFHash(CFTypeRef cf) {
    const auto hash = cv::object(cf).isa->behaviour.hash;
    return hash != nullptr ? hash(cv::object(cf)) : reinterpret_cast<CFHashCode>(cf) / alignof(objc_object);
}

CFTypeID CFGetTypeID(CFTypeRef cf) {
    return cv::typeID(*cv::object(cf).isa);
}
