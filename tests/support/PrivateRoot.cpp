#include "tests/support/PrivateRoot.h"

#include <algorithm>
#include <filesystem>

#include "installer-host/run/PrivateFolders.h"

namespace test {

PrivateRoot::PrivateRoot() {
    for (const char* folder : host::PRIVATE_FOLDERS) {
        std::filesystem::create_directory(host::pathInRoot(folder_.path(), folder));
    }
}

std::vector<std::string> PrivateRoot::wrap(const std::vector<std::string>& command,
                                           const std::vector<std::string>& arguments) {
    std::vector<std::string> wrapped = sandboxes_.emplace_back(folder_.path()).wrap(command);
    wrapped.insert(std::find(wrapped.begin(), wrapped.end(), "--"), arguments.begin(), arguments.end());
    return wrapped;
}

}  // namespace test
