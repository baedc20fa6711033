#pragma once

// Between property lists as values of C++ and as CoreFoundation objects.

#include <CoreFoundation/CFBase.h>

#include "platform/PropertyList/Value.h"
#include "platform/Result.h"

namespace cv::plist {

/// A copy of the object's value; a fault for an object that is not a property list, or that none can carry without
/// loss. Throws std::bad_alloc.
Result<Value> valueOf(CFPropertyListRef object);

/// A new object, owned by the caller, with the value. A UID becomes a dictionary with the one key "CF$UID". Throws
/// std::bad_alloc.
CFPropertyListRef createObject(const Value& value);

}  // namespace cv::plist
