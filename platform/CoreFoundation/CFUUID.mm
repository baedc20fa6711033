#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFUUID.h>

#include <array>
#include <map>
#include <mutex>

#include "platform/CoreFoundation/Bridge.h"

/// An identifier that ignores retain and release.
@interface CvConstantUUID : NSUUID
@end

@implementation CvConstantUUID

- (id)retain {
    return self;
}

- (oneway void)release {
}

- (id)autorelease {
    return self;
}

- (NSUInteger)retainCount {
    return NSIntegerMax;
}

@end

namespace {

using Bytes = std::array<UInt8, sizeof(CFUUIDBytes)>;

CFUUIDRef newUUID(Class type, const UInt8* bytes) {
    return cv::guarded<CFUUIDRef>(
        nullptr, [=] { return cv::reference<CFUUIDRef>([[type alloc] initWithUUIDBytes:const_cast<UInt8*>(bytes)]); });
}

}  // namespace

CFTypeID CFUUIDGetTypeID() {
    return cv::typeID([NSUUID class]);
}

CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef, CFUUIDBytes bytes) {
    return newUUID([NSUUID class], &bytes.byte0);
}

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef, UInt8 byte0, UInt8 byte1, UInt8 byte2, UInt8 byte3,
                                         UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9,
                                         UInt8 byte10, UInt8 byte11, UInt8 byte12, UInt8 byte13, UInt8 byte14,
                                         UInt8 byte15) {
    static std::mutex mutex;
    // Never destroyed: other images use their constants until the process ends.
    static auto& constants = *new std::map<Bytes, CFUUIDRef>;

    const Bytes bytes = {byte0, byte1, byte2,  byte3,  byte4,  byte5,  byte6,  byte7,
                         byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15};
    const std::lock_guard<std::mutex> lock(mutex);
    CFUUIDRef& constant = constants[bytes];
    if (constant == nullptr) {
        constant = newUUID([CvConstantUUID class], bytes.data());
    }
    return constant;
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid) {
    CFUUIDBytes bytes = {};
    [cv::object<NSUUID*>(uuid) getUUIDBytes:&bytes.byte0];
    return bytes;
}

CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef, CFStringRef text) {
    return text == nullptr ? nullptr : cv::guarded<CFUUIDRef>(nullptr, [=] {
        return cv::reference<CFUUIDRef>([[NSUUID alloc] initWithUUIDString:cv::object<NSString*>(text)]);
    });
}

CFStringRef CFUUIDCreateString(CFAllocatorRef, CFUUIDRef uuid) {
    return cv::guarded<CFStringRef>(
        nullptr, [=] { return cv::reference<CFStringRef>([[cv::object<NSUUID*>(uuid) UUIDString] retain]); });
}
