#pragma once

#include <string>

namespace host {

/// What the user can do where bubblewrap could not make a private root: that depends on what keeps this user from
/// making namespaces here. `system` is a folder that stands for "/".
std::string namespaceAdvice(bool isRoot, const std::string& system = "");

/// The same for the user and the system of this process.
std::string namespaceAdvice();

}  // namespace host
