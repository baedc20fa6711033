#include <CoreFoundation/CFArray.h>

#include <algorithm>

#include "platform/CoreFoundation/Collections.h"

const objc_class cv::ARRAY_CLASS("NSArray", OBJECT_METACLASS, &OBJECT_CLASS, nullptr, valueOf<__CFArray>());

bool __CFArray::operator==(const __CFArray& other) const {
    return std::equal(items.begin(), items.end(), other.items.begin(), other.items.end(), cv::EqualObjects());
}

CFTypeID CFArrayGetTypeID() {
    return cv::typeID(cv::ARRAY_CLASS);
}

CFIndex CFArrayGetCount(CFArrayRef array) {
    return static_cast<CFIndex>(array->items.size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    if (index < 0 || index >= CFArrayGetCount(array)) {
        cv::fail("CFArrayGetValueAtIndex", "the index is beyond the array");
    }
    return array->items[static_cast<std::size_t>(index)].get();
}
