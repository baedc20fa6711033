#include <CoreFoundation/CFDictionary.h>

#include "platform/CoreFoundation/Bridge.h"

CFTypeID CFDictionaryGetTypeID() {
    return cv::typeID([NSDictionary class]);
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    return cv::reference<CFTypeRef>([cv::object<NSDictionary*>(dictionary) objectForKey:cv::object(key)]);
}
