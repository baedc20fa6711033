#pragma once

// What the sources of String share; no other file includes this.

#include <cstddef>
#include <string_view>

namespace StringDetail {

/// The first position where `pattern`, which must not be empty, begins in `text`, or std::string_view::npos. Takes no
/// memory, and compares at most about two bytes for each byte of the text and five for each of the pattern, whatever
/// the two hold. For most texts other ways are far faster.
std::size_t findTwoWay(std::string_view text, std::string_view pattern);

}  // namespace StringDetail
