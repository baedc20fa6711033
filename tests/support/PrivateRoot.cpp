#include "tests/support/PrivateRoot.h"

#include <filesystem>

namespace test {

namespace fs = std::filesystem;

namespace {

constexpr const char* HOME_FOLDER = "/home-of-the-test";

/// The arguments that show what the machine's root folder has, except what the private root has of its own.
std::vector<std::string> machineMounts() {
    std::vector<std::string> mounts;
    for (const fs::directory_entry& entry : fs::directory_iterator("/")) {
        const std::string path = entry.path();
        if (path == "/Library" || path == "/Applications" || path == "/dev" || path == "/proc") {
            continue;
        }
        if (entry.is_symlink()) {
            mounts.insert(mounts.end(), {"--symlink", fs::read_symlink(entry).string(), path});
        } else if (entry.is_directory()) {
            mounts.insert(mounts.end(), {"--ro-bind", path, path});
        }
    }
    return mounts;
}

}  // namespace

PrivateRoot::PrivateRoot() {
    fs::create_directory(folder_ / "Library");
    fs::create_directory(folder_ / "Applications");
}

std::vector<std::string> PrivateRoot::wrap(const std::vector<std::string>& command,
                                           const std::vector<std::string>& arguments) const {
    std::vector<std::string> wrapped{"bwrap", "--die-with-parent"};
    const auto add = [&](const std::vector<std::string>& more) {
        wrapped.insert(wrapped.end(), more.begin(), more.end());
    };
    add(machineMounts());
    add({"--dev", "/dev", "--proc", "/proc", "--tmpfs", HOME_FOLDER, "--setenv", "HOME", HOME_FOLDER});
    add({"--bind", folder_ / "Library", "/Library", "--bind", folder_ / "Applications", "/Applications"});
    add(arguments);
    add({"--"});
    add(command);
    return wrapped;
}

}  // namespace test
