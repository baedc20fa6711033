#pragma once

// Between property lists as values of C++ and as CoreFoundation objects.

#include <CoreFoundation/CFBase.h>

#include <optional>
#include <string>

#include "platform/PropertyList/Value.h"

namespace cv::plist {

/// A copy of the object's value. Nothing, and `reason` set to what is wrong, for an object that is no property list or
/// whose value none can carry without loss. Throws std::bad_alloc.
std::optional<Value> valueOf(CFPropertyListRef object, std::string& reason);

/// A new object, owned by the caller, with the value. A UID becomes a dictionary with the one key "CF$UID". Throws
/// std::bad_alloc.
CFPropertyListRef createObject(const Value& value);

}  // namespace cv::plist
