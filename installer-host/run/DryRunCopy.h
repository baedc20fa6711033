#pragma once

#include <string>

#include "installer-host/run/ThrowAwayFolder.h"

namespace host {

/// A copy of the part of a root that an installation can change (Library and Applications), to try an installation on.
/// It has all of the original (TreeCopy.h), in which nothing changes, not even an access time. The copy is removed at
/// the end of the scope.
class DryRunCopy {
public:
    /// `root` is an absolute path without symbolic links. Throws Failure (RootNotMade) when a faithful copy cannot be
    /// made, and Interrupted.
    explicit DryRunCopy(const std::string& root);

    const std::string& path() const { return folder_.path(); }

private:
    ThrowAwayFolder folder_;
};

}  // namespace host
