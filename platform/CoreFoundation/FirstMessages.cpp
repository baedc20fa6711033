// When two threads send a class its first message at the same moment, GCC's runtime may find no method for one of them,
// and that thread crashes. So the Foundation classes that the port uses get their first messages while the library is
// loaded. This is C++ because the library's own Objective-C is not registered with the runtime yet.

#include "platform/MessageSend.h"

namespace {

using cv::classNamed;
using cv::send;

constexpr const char* CLASSES[] = {
    "NSArray",  "NSData",   "NSDate", "NSDictionary", "NSException", "NSMutableArray", "NSMutableDictionary",
    "NSNumber", "NSString", "NSURL",  "NSUUID"};

/// Makes an object of each private class that stands behind the public ones.
void useClusters() {
    const id number = classNamed("NSNumber");
    send<id>(number, "numberWithBool:", static_cast<BOOL>(YES));
    send<id>(number, "numberWithLongLong:", 1LL << 40);
    send<id>(number, "numberWithUnsignedLongLong:", ~0ULL);
    const id item = send<id>(number, "numberWithInt:", 70000);
    const id array = send<id>(classNamed("NSMutableArray"), "arrayWithObject:", item);
    send<id>(send<id>(array, "objectEnumerator"), "nextObject");
    send<id>(classNamed("NSArray"), "arrayWithArray:", array);
    const id dictionary = send<id>(classNamed("NSMutableDictionary"), "dictionaryWithObject:forKey:", array, item);
    send<id>(send<id>(dictionary, "keyEnumerator"), "nextObject");
    send<id>(classNamed("NSDictionary"), "dictionaryWithDictionary:", dictionary);
    send<id>(classNamed("NSData"), "dataWithBytes:length:", static_cast<const void*>("x"), cv::UInteger{1});
}

[[gnu::constructor]] void sendFirstMessages() {
    try {
        const id pool = send<id>(classNamed("NSAutoreleasePool"), "new");
        for (const char* name : CLASSES) {
            send<id>(classNamed(name), "class");
        }
        useClusters();
        send<void>(pool, "drain");
    } catch (...) {
        // What cannot be used now raises again, and is reported, where the port uses it.
    }
}

}  // namespace
