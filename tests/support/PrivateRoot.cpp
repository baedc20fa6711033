#include "tests/support/PrivateRoot.h"

#include <algorithm>
#include <filesystem>

namespace test {

namespace fs = std::filesystem;

PrivateRoot::PrivateRoot() {
    fs::create_directory(folder_ / "Library");
    fs::create_directory(folder_ / "Applications");
}

std::vector<std::string> PrivateRoot::wrap(const std::vector<std::string>& command,
                                           const std::vector<std::string>& arguments) {
    std::vector<std::string> wrapped = sandboxes_.emplace_back(folder_.path()).wrap(command);
    wrapped.insert(std::find(wrapped.begin(), wrapped.end(), "--"), arguments.begin(), arguments.end());
    return wrapped;
}

}  // namespace test
