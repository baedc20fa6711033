#pragma once

// The classes that are reached by message sending, and what their sources share.

#include <algorithm>
#include <iterator>
#include <string_view>

#include "platform/CoreFoundation/Object.h"

namespace cv {

extern const objc_class ALERT_CLASS;             ///< NSAlert
extern const objc_class AUTORELEASE_POOL_CLASS;  ///< NSAutoreleasePool
extern const objc_class BUNDLE_PROXY_CLASS;      ///< NSBundle

/// One row of a class's table of methods. The function's first parameters are the receiver (id) and the selector.
struct Method {
    std::string_view selector;
    IMP function;
};

template <typename Function>
IMP method(Function* function) {
    return reinterpret_cast<IMP>(function);
}

/// The function in the row of the selector; null when there is none.
template <std::size_t count>
IMP findMethod(const Method (&table)[count], std::string_view selector) {
    const auto row = std::find_if(std::begin(table), std::end(table),
                                  [selector](const Method& candidate) { return candidate.selector == selector; });
    return row != std::end(table) ? row->function : nullptr;
}

/// Gives a reference to `object` up at the end of the thread's innermost autorelease pool. Without a pool the object
/// stays for ever, which is reported on standard error, as on a Mac. Throws std::bad_alloc, and the reference is given
/// up then.
void autorelease(id object);

}  // namespace cv
