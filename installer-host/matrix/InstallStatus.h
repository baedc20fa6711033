#pragma once

#include <optional>
#include <string>

#include "installer-host/look/RootFolder.h"

namespace host {

/// What the install-status file says before a case runs.
struct InstallStatus {
    std::string name;                    ///< in the names of cases: "on", "off", "none", "as-is", or that of the file
    std::string file;                    ///< the absolute path of the file that is put in its place; empty: none
    std::optional<std::string> content;  ///< what the file is to hold; unset: there is to be none
    bool isKept = false;                 ///< the root's own is kept, if any
};

/// What the user means by `word`: on, off, none, as-is, or else the path of a file, which is read. A relative path
/// leads from `folder`. Throws Failure: RootNotMade when it cannot be read, Usage when its name is none for a case.
InstallStatus installStatus(const std::string& word, const std::string& folder);

/// Puts the install-status file into a root. No link in it leads out of the root. Throws Failure (RootNotMade).
void putInstallStatus(const RootFolder& root, const InstallStatus& status);

}  // namespace host
