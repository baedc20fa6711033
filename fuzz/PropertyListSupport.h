#pragma once

#include <string>

#include "platform/PropertyList/PropertyList.h"

namespace fuzz {

/// Whether the two are the same to the last bit, but that one NaN is as good as any other.
bool isSame(const cv::plist::Value& a, const cv::plist::Value& b);

/// Fails unless the bytes are read as a property list of this value.
void expectReadAs(const std::string& bytes, const cv::plist::Value& value);

}  // namespace fuzz
