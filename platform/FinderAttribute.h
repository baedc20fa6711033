#pragma once

#include <cstddef>

namespace cv {

// How a file or folder keeps its Finder information: in an extended attribute of 32 bytes, big-endian.

constexpr const char* FINDER_INFO_ATTRIBUTE = "user.com.apple.FinderInfo";
constexpr std::size_t FINDER_INFO_SIZE = 32;
constexpr std::size_t FINDER_FLAGS_OFFSET = 8;  ///< where the 16 bits of the Finder flags are

/// Why an attribute of another size cannot be read, to end a sentence with.
constexpr const char* FINDER_INFO_HAS_WRONG_SIZE = "its Finder information has a size other than 32 bytes";

}  // namespace cv
