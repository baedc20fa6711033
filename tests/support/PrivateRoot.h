#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/TempDir.h"

namespace test {

/// A machine of its own for one test: a /Library and an /Applications folder that only programs run through wrap() see,
/// and that the test looks into from outside. The first of them makes the two folders, if the test did not.
class PrivateRoot {
public:
    /// The root's own absolute path.
    const std::string& path() const { return folder_.path(); }

    /// Where the root's file `name` ("Library/Preferences/x.plist") is for the test.
    std::string operator/(std::string_view name) const { return folder_ / name; }

    /// The command line that runs `command` in the root, where the rest of the machine can only be read and the home
    /// folder is an empty one. `arguments` go to bubblewrap after all others.
    std::vector<std::string> wrap(const std::vector<std::string>& command,
                                  const std::vector<std::string>& arguments = {}) const;

private:
    TempDir folder_;
};

}  // namespace test
