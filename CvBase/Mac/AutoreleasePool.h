#pragma once

#include "CvBase/Mac/MessageSend.h"

namespace cv {

/// An autorelease pool for the length of a scope, at the end of which it releases what was autoreleased on this thread.
///
///     const cv::AutoreleasePool pool;
///     const String name = Util::GetCurrentProcessDisplayName();
///
/// Message boxes and the process's names need one. Pools nest and must end in the reverse order in which they began, so
/// make them local variables. In a process without the class NSAutoreleasePool they do nothing.
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
