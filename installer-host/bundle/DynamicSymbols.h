#pragma once

#include <string>
#include <vector>

namespace host {

/// The names that a loaded image exports, sorted. `address` is any address of its code or data. Empty when the image
/// has no table of them that can be read.
std::vector<std::string> exportedSymbols(const void* address);

}  // namespace host
