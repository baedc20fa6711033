#include <objc/message.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <string>

#include "platform/CoreFoundation/Object.h"
#include "platform/ObjC/Classes.h"

/// A selector is its name, at one place for each name.
struct objc_selector {
    const char* name;
};

namespace {

/// The selectors of the methods that there are: sending what an object understands takes no memory, so that it can be
/// done while memory runs out, as in destructors.
const objc_selector KNOWN_SELECTORS[] = {
    {"addButtonWithTitle:"}, {"alloc"},   {"autorelease"}, {"drain"},    {"infoDictionary"}, {"init"},
    {"mainBundle"},          {"release"}, {"retain"},      {"runModal"}, {"setAlertStyle:"}, {"setMessageText:"}};

/// The selector of a name that no method has.
SEL otherSelector(const char* name) {
    static std::mutex mutex;
    // Never destroyed: objects are sent messages until the process ends.
    static auto& selectors = *new std::map<std::string, objc_selector>;

    const std::lock_guard<std::mutex> lock(mutex);
    const auto [place, isNew] = selectors.try_emplace(name);
    if (isNew) {
        place->second.name = place->first.c_str();
    }
    return &place->second;
}

const objc_class* const CLASSES[] = {&cv::ALERT_CLASS, &cv::AUTORELEASE_POOL_CLASS, &cv::BUNDLE_PROXY_CLASS,
                                     &cv::OBJECT_CLASS};

// The methods that every object has.

id retain(id self, SEL) {
    self->retain();
    return self;
}

void release(id self, SEL) {
    self->release();
}

id autorelease(id self, SEL) {
    cv::autorelease(self);
    return self;
}

IMP objectMethod(std::string_view selector) {
    static const cv::Method METHODS[] = {
        {"autorelease", cv::method(autorelease)},
        {"release", cv::method(release)},
        {"retain", cv::method(retain)},
    };
    return cv::findMethod(METHODS, selector);
}

/// Stands for every method that is missing.
void endProcess(id self, SEL selector) {
    const bool isClass = self->isa == &cv::OBJECT_METACLASS || self->isa->superclass == &cv::OBJECT_METACLASS;
    std::fprintf(stderr, "*** %c[%s %s]: unrecognized selector sent to %s ***\n", isClass ? '+' : '-', self->isa->name,
                 selector->name, isClass ? "class" : "instance");
    std::abort();
}

}  // namespace

namespace cv {

const objc_class OBJECT_METACLASS("NSObject", OBJECT_METACLASS, &OBJECT_CLASS, nullptr);
const objc_class OBJECT_CLASS("NSObject", OBJECT_METACLASS, nullptr, objectMethod);

}  // namespace cv

SEL sel_registerName(const char* name) {
    for (const objc_selector& known : KNOWN_SELECTORS) {
        if (std::strcmp(known.name, name) == 0) {
            return &known;
        }
    }
    return otherSelector(name);
}

id objc_getClass(const char* name) {
    for (const objc_class* const type : CLASSES) {
        if (std::string_view(type->name) == name) {
            return const_cast<objc_class*>(type);
        }
    }
    return nullptr;
}

Class object_getClass(id object) {
    return object != nullptr ? object->isa : nullptr;
}

IMP class_getMethodImplementation(Class type, SEL name) {
    if (type == nullptr || name == nullptr) {
        return nullptr;
    }
    for (const objc_class* place = type; place != nullptr; place = place->superclass) {
        const IMP function = place->methods != nullptr ? place->methods(name->name) : nullptr;
        if (function != nullptr) {
            return function;
        }
    }
    return cv::method(endProcess);
}
