#pragma once

#include <string>

namespace host {

/// A new empty folder, removed with all that is in it at the end of the scope, whatever the bundle's code has put
/// there.
class ThrowAwayFolder {
public:
    /// Made in $TMPDIR, or in /var/tmp when that is not set or lies in `root`, an absolute path without symbolic links.
    /// Throws Failure (RootNotMade).
    explicit ThrowAwayFolder(const std::string& root);
    ~ThrowAwayFolder();
    ThrowAwayFolder(const ThrowAwayFolder&) = delete;
    ThrowAwayFolder& operator=(const ThrowAwayFolder&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

}  // namespace host
