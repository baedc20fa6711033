#pragma once

#include <string>

namespace host {

/// What a private root has of its own; the rest is the machine's.
constexpr const char* PRIVATE_FOLDERS[] = {"/Library", "/Applications"};

/// Where the private folder `name` of the root at `root`, an absolute path, is on the machine.
inline std::string pathInRoot(const std::string& root, const char* name) {
    return (root == "/" ? "" : root) + name;
}

}  // namespace host
