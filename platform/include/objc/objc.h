#pragma once

// The part of the Objective-C runtime's objc.h that this project uses. There is no Objective-C here: a few classes of
// the port implement messages that C++ sends (CvBase/Mac/MessageSend.h).

const typedef struct objc_class* Class;
typedef struct objc_object* id;  ///< any object, CoreFoundation's included; null is none
const typedef struct objc_selector* SEL;
typedef void (*IMP)(void);  ///< a method's function, to be cast to its real type
typedef signed char BOOL;

#define YES (static_cast<BOOL>(1))
#define NO (static_cast<BOOL>(0))

#define OBJC_EXPORT extern "C" __attribute__((visibility("default")))

/// The selector of a name. One name gives one selector, which lives to the end of the process.
OBJC_EXPORT SEL sel_registerName(const char* name);
