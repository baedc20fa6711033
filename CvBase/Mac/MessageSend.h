#pragma once

#include <objc/objc.h>
#include <objc/runtime.h>

/// \file
/// Typed message sending from C++ to classes that have only an Objective-C interface on the Mac.
///
///     const id panel = cv::send<id>(cv::classNamed("NSAlert"), "alloc");
///     cv::send<void>(panel, "setAlertStyle:", cv::UInteger{2});
///     const auto button = cv::send<cv::Integer>(panel, "runModal");

namespace cv {

using Integer = long;            ///< NSInteger, as wide as a pointer
using UInteger = unsigned long;  ///< NSUInteger, as wide as a pointer

/// The class object of `name`, or null when the process knows no such class.
[[nodiscard]] inline id classNamed(const char* name) {
    return reinterpret_cast<id>(objc_getClass(name));
}

/// Sends `selector` to `receiver` and returns the method's result as `Result`. The arguments must have exactly the
/// method's parameter types, else the behaviour is undefined. `Result` must be void, a pointer, a Boolean or an
/// integer, not a floating-point number or a structure. A null receiver gives `Result()`. A method that the receiver
/// does not have ends the process.
template <typename Result, typename... Args>
Result send(id receiver, const char* selector, Args... args) {
    if (receiver == nullptr) {
        return Result();
    }
    using Method = Result (*)(id, SEL, Args...);
    using AnyFunction = void (*)();  // what every function type may be cast to and from
    const SEL name = sel_registerName(selector);
    const auto function = reinterpret_cast<AnyFunction>(class_getMethodImplementation(object_getClass(receiver), name));
    return reinterpret_cast<Method>(function)(receiver, name, args...);
}

}  // namespace cv
