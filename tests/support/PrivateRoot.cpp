#include "tests/support/PrivateRoot.h"

#include <filesystem>

#include "tests/support/Process.h"

namespace test {

namespace fs = std::filesystem;

namespace {

constexpr const char* OWN_FOLDERS[] = {"/Library", "/Applications"};
constexpr const char* HOME_FOLDER = "/test-home";

bool isReplaced(const fs::path& path) {
    return path == "/dev" || path == "/proc" || path == OWN_FOLDERS[0] || path == OWN_FOLDERS[1];
}

}  // namespace

std::vector<std::string> PrivateRoot::wrap(const std::vector<std::string>& command,
                                           const std::vector<std::string>& arguments) const {
    std::vector<std::string> wrapped{"bwrap", "--die-with-parent", "--unshare-pid"};
    const auto add = [&](const std::vector<std::string>& more) {
        wrapped.insert(wrapped.end(), more.begin(), more.end());
    };
    for (const fs::directory_entry& entry : fs::directory_iterator("/")) {
        if (entry.is_symlink()) {
            add({"--symlink", fs::read_symlink(entry).string(), entry.path()});
        } else if (entry.is_directory() && !isReplaced(entry.path())) {
            add({"--ro-bind", entry.path(), entry.path()});
        }
    }
    for (const char* name : OWN_FOLDERS) {
        fs::create_directory(path() + name);
        add({"--bind", path() + name, name});
    }
    add({"--tmpfs", HOME_FOLDER, "--dev", "/dev", "--proc", "/proc"});
    for (const char* variable : {"HOME", "TMPDIR", "TMP", "TEMP"}) {
        add({"--setenv", variable, HOME_FOLDER});
    }
    add({"--chdir", "/", "--remount-ro", "/"});
    add(arguments);
    add({"--"});
    add(startable(command));
    return wrapped;
}

}  // namespace test
