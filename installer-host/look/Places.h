#pragma once

#include <filesystem>

namespace host {

/// The machine's folders that programs and libraries are in, which the bundle's code sees in a private root. Some are
/// links to others.
constexpr const char* SYSTEM_FOLDERS[] = {"/usr", "/bin", "/sbin", "/lib", "/lib32", "/lib64", "/libx32"};

/// Whether `folder`, or one of the folders that it lies in, is the very folder `top`, by whatever path: links and
/// mounts give a folder several. `folder` is absolute and without symbolic links, and so is a `top` that is not there.
bool liesIn(std::filesystem::path folder, const std::filesystem::path& top);

}  // namespace host
