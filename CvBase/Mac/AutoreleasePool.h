#pragma once

#include "CvBase/Mac/MessageSend.h"

namespace cv {

/// An autorelease pool for the length of a scope: what is autoreleased on this thread meanwhile is released at its end.
/// Pools nest; the scopes must end in the reverse order of their beginning, as C++ scopes do.
class AutoreleasePool {
public:
    AutoreleasePool() : pool_(send<id>(send<id>(classNamed("NSAutoreleasePool"), "alloc"), "init")) {}
    ~AutoreleasePool() { send<void>(pool_, "drain"); }
    AutoreleasePool(const AutoreleasePool&) = delete;
    AutoreleasePool& operator=(const AutoreleasePool&) = delete;

private:
    id pool_;
};

}  // namespace cv
