#pragma once

#include <objc/objc.h>

/// The class object of a name, one of NSAlert, NSAutoreleasePool, NSBundle and NSObject; null for any other.
OBJC_EXPORT id objc_getClass(const char* name);

/// The class of an object, CoreFoundation objects included; a class object's is its metaclass. Null for null.
OBJC_EXPORT Class object_getClass(id object);

/// The function of a method, to be called with the receiver and the selector before the method's own arguments. For a
/// method that neither the class nor one above it has, a function that ends the process with the method's name. Null
/// for a null class or selector.
OBJC_EXPORT IMP class_getMethodImplementation(Class type, SEL name);
