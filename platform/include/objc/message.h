#pragma once

// On a Mac this header has objc_msgSend and its kin, which a C++ function cannot replace: to send a message, call what
// class_getMethodImplementation returns, here and on a Mac.

#include <objc/objc.h>
#include <objc/runtime.h>
