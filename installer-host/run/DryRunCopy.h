#pragma once

#include <string>

namespace host {

/// A copy of the part of a root that an installation can change (Library and Applications), to try an installation on.
/// It has all of the original (TreeCopy.h), in which nothing changes, not even an access time. The copy is removed at
/// the end of the scope.
class DryRunCopy {
public:
    /// `root` is an absolute path without symbolic links. The copy is made in $TMPDIR, or in /var/tmp when that is not
    /// set or lies in the root. Throws Failure (RootNotMade) when a faithful copy cannot be made, and Interrupted.
    explicit DryRunCopy(const std::string& root);
    ~DryRunCopy();
    DryRunCopy(const DryRunCopy&) = delete;
    DryRunCopy& operator=(const DryRunCopy&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

}  // namespace host
