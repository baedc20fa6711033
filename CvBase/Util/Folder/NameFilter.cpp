#include "CvBase/Util/Folder/NameFilter.h"

#include <algorithm>

#include "CvBase/common/common_char.h"

namespace Util {

namespace {

/// Whether the bytes at `text` are those of `lowered`, ignoring case.
bool equalsLowered(const char* text, const std::string& lowered) {
    return std::equal(lowered.begin(), lowered.end(), text, [](char a, char b) { return a == Char(b).ToLower(); });
}

}  // namespace

NameFilter::NameFilter(const String& filter) {
    const checked_value<unsigned int> star = filter.Find('*');
    if (star.IsSet()) {
        prefix_ = filter.Left(star.Value()).ToLower().CStr();
        suffix_ = filter.Mid(star.Value() + 1).ToLower().CStr();
    } else {
        prefix_ = filter.ToLower().CStr();
    }
}

bool NameFilter::matches(const char* name, std::size_t length) const {
    return length >= prefix_.size() && length >= suffix_.size() && equalsLowered(name, prefix_) &&
           equalsLowered(name + (length - suffix_.size()), suffix_);
}

}  // namespace Util
