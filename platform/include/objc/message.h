#pragma once

// On a Mac this header has objc_msgSend and its kin, which no function of C++ can stand for: a message is sent by
// calling what class_getMethodImplementation gives, on both sides.

#include <objc/objc.h>
#include <objc/runtime.h>
