#include <CoreFoundation/CFArray.h>

#include "platform/CoreFoundation/Bridge.h"

CFTypeID CFArrayGetTypeID() {
    return cv::typeID([NSArray class]);
}

CFIndex CFArrayGetCount(CFArrayRef array) {
    return static_cast<CFIndex>([cv::object<NSArray*>(array) count]);
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    if (index < 0 || index >= CFArrayGetCount(array)) {
        cv::fail("CFArrayGetValueAtIndex", "the index is beyond the array");
    }
    return cv::reference<CFTypeRef>([cv::object<NSArray*>(array) objectAtIndex:static_cast<NSUInteger>(index)]);
}
