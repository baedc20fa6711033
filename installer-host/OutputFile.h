#pragma once

#include <string>
#include <string_view>

namespace host {

/// Puts a file with these bytes in the place of the one at `path`, or makes it; whoever reads it sees the old one or
/// the new one, whole. It keeps the mode of the old one. Throws Failure (NotStored) when that cannot be, also when
/// there is something else than a file, be it a link.
void replaceFile(const std::string& path, std::string_view bytes);

}  // namespace host
