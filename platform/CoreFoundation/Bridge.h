#pragma once

// What the port's sources over Foundation share: casts between references and objects, the type of an object, and the
// guard that keeps Objective-C exceptions inside the port.

#import <Foundation/Foundation.h>

#include <CoreFoundation/CFBase.h>

#include <exception>
#include <vector>

namespace cv {

/// The object behind a reference: toll-free bridging is this cast.
template <typename Object = id>
Object object(CFTypeRef reference) {
    return static_cast<Object>(reinterpret_cast<id>(const_cast<void*>(reference)));
}

/// The reference of an object. It carries no reference count of its own.
template <typename Reference>
Reference reference(id object) {
    return reinterpret_cast<Reference>(object);
}

/// The type ID of every object whose class is `type` or below it: the class right under NSObject.
CFTypeID typeID(Class type);

/// The objects that are left in `enumerator`, to loop over: GCC knows no `for (id item in items)` in Objective-C++.
inline std::vector<id> each(NSEnumerator* enumerator) {
    std::vector<id> items;
    while (const id item = [enumerator nextObject]) {
        items.push_back(item);
    }
    return items;
}

/// Ends the process with a message on standard error, where a Mac would end it too.
[[noreturn]] void fail(const char* function, const char* reason);

/// An autorelease pool for the lifetime of a C++ scope.
class AutoreleasePool {
   public:
    AutoreleasePool() : pool_([NSAutoreleasePool new]) {}
    ~AutoreleasePool() { [pool_ release]; }
    AutoreleasePool(const AutoreleasePool&) = delete;
    AutoreleasePool& operator=(const AutoreleasePool&) = delete;

   private:
    NSAutoreleasePool* pool_;
};

/// Runs `body` with an autorelease pool of its own and returns what it returns, or `fallback` when Foundation raises an
/// exception. What `body` returns must not depend on the pool. C++ exceptions, such as a lack of memory, travel on.
template <typename Result, typename Body>
Result guarded(Result fallback, Body body) {
    const AutoreleasePool pool;
    try {
        return body();
    } catch (const std::exception&) {
        throw;
    } catch (...) {
        return fallback;
    }
}

}  // namespace cv
