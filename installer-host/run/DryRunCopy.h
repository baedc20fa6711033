#pragma once

#include <string>

namespace host {

/// A copy of the part of a root that an installation can change (Library and Applications), to try an installation on.
/// The copy has the modes, times, extended attributes, links, holes and, as far as the user may set them, the owners of
/// the original, whose access times do not change either: it is read through a read-only view of it. The copy is
/// removed at the end of the scope.
class DryRunCopy {
public:
    /// `root` is an absolute path. The copy is made in $TMPDIR, or in /var/tmp. Throws Failure (RootNotMade) when a
    /// faithful copy cannot be made.
    explicit DryRunCopy(const std::string& root);
    ~DryRunCopy();
    DryRunCopy(const DryRunCopy&) = delete;
    DryRunCopy& operator=(const DryRunCopy&) = delete;

    const std::string& path() const { return path_; }

private:
    void copyFrom(const std::string& root);
    void remove() noexcept;

    std::string path_;
};

}  // namespace host
