#include "tests/support/PrivateRoot.h"

#include <algorithm>

namespace test {

std::vector<std::string> PrivateRoot::wrap(const std::vector<std::string>& command,
                                           const std::vector<std::string>& arguments) {
    std::vector<std::string> wrapped = sandboxes_.emplace_back(folder_.path()).wrap(command);
    wrapped.insert(std::find(wrapped.begin(), wrapped.end(), "--"), arguments.begin(), arguments.end());
    return wrapped;
}

}  // namespace test
