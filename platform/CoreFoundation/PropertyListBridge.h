#pragma once

// Between property list trees and CoreFoundation objects.

#include <CoreFoundation/CFBase.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/CoreFoundation/PropertyList.h"

namespace cv {

/// The text in UTF-8; nothing when it is null or no string, or when it has a NUL or half a surrogate pair, which
/// neither libplist nor a file name can carry.
std::optional<std::string> utf8Of(CFTypeRef text);

namespace plist {

/// A copy of the value, to be one of a dictionary's. Null, and `reason` set to what is wrong, for a value that is no
/// property list or that a tree cannot carry without loss.
Tree fromReference(CFPropertyListRef value, std::string& reason);

/// A new object, owned by the caller, with the node's value. A UID becomes a dictionary with the one key "CF$UID".
CFPropertyListRef createReference(plist_t node);

}  // namespace plist

}  // namespace cv
