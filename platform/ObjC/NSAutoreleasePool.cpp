#include <memory>
#include <vector>

#include "platform/CoreFoundation/Object.h"
#include "platform/ObjC/Classes.h"
#include "platform/Report.h"

namespace cv {

namespace {

struct Pool;

/// The innermost pool of this thread.
thread_local Pool* g_innermost = nullptr;

/// Holds what is to be released at its end. The pools of a thread are a stack.
struct Pool : objc_object {
    Pool() : objc_object(AUTORELEASE_POOL_CLASS), outer(g_innermost) { g_innermost = this; }

    /// Ends the pools inside of this one, too, that were not ended.
    ~Pool() {
        while (g_innermost != this) {
            g_innermost->release();
        }
        for (std::size_t i = 0; i < objects.size(); ++i) {  // releasing one may autorelease more
            objects[i].reset();
        }
        g_innermost = outer;
    }

    Pool* const outer;
    std::vector<Owned<objc_object>> objects;
};

id alloc(id, SEL) {
    return new Pool;
}

id init(id self, SEL) {
    return self;
}

void drain(id self, SEL) {
    self->release();
}

IMP classMethod(std::string_view selector) {
    static const Method METHODS[] = {{"alloc", method(alloc)}};
    return findMethod(METHODS, selector);
}

IMP poolMethod(std::string_view selector) {
    static const Method METHODS[] = {{"drain", method(drain)}, {"init", method(init)}};
    return findMethod(METHODS, selector);
}

const objc_class METACLASS("NSAutoreleasePool", OBJECT_METACLASS, &OBJECT_METACLASS, classMethod);

}  // namespace

const objc_class AUTORELEASE_POOL_CLASS("NSAutoreleasePool", METACLASS, &OBJECT_CLASS, poolMethod, identityOf<Pool>());

void autorelease(id object) {
    if (g_innermost == nullptr) {
        report(object->isa->name, "autoreleased with no pool in place; it is never released");
        return;
    }
    Owned<objc_object> owned(object);
    g_innermost->objects.push_back(std::move(owned));
}

}  // namespace cv
