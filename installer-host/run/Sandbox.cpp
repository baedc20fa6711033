#include "installer-host/run/Sandbox.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <iterator>

#include "installer-host/ExitStatus.h"
#include "installer-host/run/PrivateFolders.h"

namespace host {

namespace {

namespace fs = std::filesystem;

constexpr const char* HOME_FOLDER = "/installer-home";

/// A file in memory that holds `text`, for a child to read from.
cv::Descriptor memoryFile(const std::string& text) {
    cv::Descriptor file(memfd_create("installer-host", 0));
    int error = file.isOpen() ? cv::writeAll(file.get(), text) : errno;
    if (error == 0 && lseek(file.get(), 0, SEEK_SET) != 0) {
        error = errno;
    }
    if (error != 0) {
        throw Failure(ExitStatus::RootNotMade, "the private root could not be made: " + cv::errorText(error));
    }
    return file;
}

/// DIR/Library or DIR/Applications, made when it is missing. A link in its place could lead out of the root.
std::string privateFolder(const std::string& root, const char* name) {
    std::string path = pathInRoot(root, name);
    std::error_code error;
    if (!fs::exists(fs::symlink_status(path))) {
        fs::create_directory(path, error);
    }
    if (!error && fs::symlink_status(path, error).type() == fs::file_type::directory) {
        return path;
    }
    throw Failure(ExitStatus::RootNotMade, "the private root cannot be used: '" + path + "' " +
                                               (error ? "cannot be made: " + error.message() : "is no folder"));
}

/// Whether a mount inside hides what is in the machine's `folder`.
bool isMountedOver(const std::string& folder) {
    return folder == "/dev" ||
           std::find(std::begin(PRIVATE_FOLDERS), std::end(PRIVATE_FOLDERS), folder) != std::end(PRIVATE_FOLDERS);
}

/// The arguments that show all of the machine but what a private root has of its own, for reading only.
std::vector<std::string> machineMounts() {
    std::vector<std::string> mounts;
    for (const fs::directory_entry& entry : fs::directory_iterator("/")) {
        const std::string path = entry.path();
        if (isMountedOver(path) || path == "/proc") {
            continue;
        }
        if (entry.is_symlink()) {
            mounts.insert(mounts.end(), {"--symlink", fs::read_symlink(path).string(), path});
        } else if (entry.is_directory()) {
            mounts.insert(mounts.end(), {"--ro-bind", path, path});
        }
    }
    return mounts;
}

std::string userName() {
    const passwd* user = getpwuid(getuid());
    return user == nullptr ? "installer" : user->pw_name;
}

/// Where the X server's key is kept when XAUTHORITY does not say so: the home folder is another one inside.
std::string xAuthority() {
    const char* home = std::getenv("HOME");
    return std::getenv("XAUTHORITY") == nullptr && home != nullptr ? std::string(home) + "/.Xauthority" : "";
}

/// Whether the program `name` is on PATH.
bool isInstalled(const std::string& name) {
    const char* folders = std::getenv("PATH");
    std::string rest = folders == nullptr ? "/usr/local/bin:/usr/bin:/bin" : folders;
    while (!rest.empty()) {
        const std::string folder = rest.substr(0, rest.find(':'));
        rest.erase(0, folder.size() + 1);
        if (access((folder + "/" + name).c_str(), X_OK) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace

Sandbox::Sandbox(const std::string& root) : mounts_(machineMounts()) {
    requireBubblewrap();
    const std::string uid = std::to_string(getuid());
    const std::string gid = std::to_string(getgid());
    passwd_ = memoryFile(userName() + ":x:" + uid + ":" + gid + "::" + HOME_FOLDER + ":/bin/sh\n");
    group_ = memoryFile("installer:x:" + gid + ":\n");
    for (const char* folder : PRIVATE_FOLDERS) {
        mounts_.insert(mounts_.end(), {"--bind", privateFolder(root, folder), folder});
    }
    mounts_.insert(mounts_.end(), {"--tmpfs", HOME_FOLDER, "--dev", "/dev", "--proc", "/proc"});
}

std::string Sandbox::show(const std::string& path) {
    if (!isMountedOver(path.substr(0, path.find('/', 1)))) {
        return path;
    }
    std::string place = std::string("/installer-bundle/") + fs::path(path).filename().string();
    mounts_.insert(mounts_.end(), {"--ro-bind", path, place});
    return place;
}

std::vector<std::string> Sandbox::wrap(const std::vector<std::string>& command) const {
    std::vector<std::string> wrapped{"bwrap", "--die-with-parent", "--unshare-pid"};
    const auto add = [&](const std::vector<std::string>& more) {
        wrapped.insert(wrapped.end(), more.begin(), more.end());
    };
    add(mounts_);
    add({"--perms", "0644", "--ro-bind-data", std::to_string(passwd_.get()), "/etc/passwd"});
    add({"--perms", "0644", "--ro-bind-data", std::to_string(group_.get()), "/etc/group"});
    for (const char* variable : {"HOME", "TMPDIR", "TMP", "TEMP"}) {
        add({"--setenv", variable, HOME_FOLDER});
    }
    if (const std::string key = xAuthority(); !key.empty()) {
        add({"--setenv", "XAUTHORITY", key});
    }
    add({"--chdir", "/", "--remount-ro", "/", "--"});
    add(command);
    return wrapped;
}

void requireBubblewrap() {
    if (!isInstalled("bwrap")) {
        throw Failure(ExitStatus::RootNotMade,
                      "a private root needs bubblewrap (the program bwrap), which is not installed.\nInstall it with: "
                      "sudo apt-get install bubblewrap");
    }
}

}  // namespace host
