#include <CoreFoundation/CFBase.h>

#include <cstdio>
#include <cstdlib>

#include "platform/CoreFoundation/Bridge.h"
#include "platform/CoreFoundation/UnitString.h"

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFAllocatorRef kCFAllocatorNull = reinterpret_cast<CFAllocatorRef>(@"kCFAllocatorNull");

namespace cv {

CFTypeID typeID(Class type) {
    const Class root = [NSObject class];
    for (Class parent = class_getSuperclass(type); parent != Nil && parent != root;
         parent = class_getSuperclass(parent)) {
        type = parent;
    }
    return reinterpret_cast<CFTypeID>(type);
}

void fail(const char* function, const char* reason) {
    std::fprintf(stderr, "*** %s: %s ***\n", function, reason);
    std::abort();
}

}  // namespace cv

CFTypeRef CFRetain(CFTypeRef cf) {
    if (cf == nullptr) {
        cv::fail("CFRetain", "called with NULL");
    }
    return cv::reference<CFTypeRef>([cv::object(cf) retain]);
}

void CFRelease(CFTypeRef cf) {
    if (cf == nullptr) {
        cv::fail("CFRelease", "called with NULL");
    }
    [cv::object(cf) release];
}

CFIndex CFGetRetainCount(CFTypeRef cf) {
    return static_cast<CFIndex>([cv::object(cf) retainCount]);
}

Boolean CFEqual(CFTypeRef a, CFTypeRef b) {
    if (a == nullptr || b == nullptr) {
        return false;
    }
    if (a == b) {
        return true;
    }
    if (CFGetTypeID(a) != CFGetTypeID(b)) {
        return false;
    }
    return cv::guarded<Boolean>(false, [=] {
        const id left = cv::object(a);
        const id right = cv::object(b);
        return [left isKindOfClass:[NSString class]] ? cv::sameUnits(left, right) : bool([left isEqual:right]);
    });
}

CFTypeID CFGetTypeID(CFTypeRef cf) {
    return cv::typeID(object_getClass(cv::object(cf)));
}
