#include "installer-host/matrix/InstallStatus.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "installer-host/ExitStatus.h"
#include "installer-host/InputFile.h"
#include "plugin/InstallStatusFile.h"

namespace host {

namespace {

namespace fs = std::filesystem;

constexpr const char* UPDATES_DISABLED = "UpdatesDisabled";

[[noreturn]] void fail(const std::string& path) {
    throw Failure(ExitStatus::RootNotMade,
                  "the install-status file could not be put into the root: '" + path + "': " + cv::errorText(errno));
}

/// Opens the folder at `path` in the root, an invalid descriptor when there is none. Makes the folders that are missing
/// on the way if `make` asks for it.
cv::Descriptor openFolder(const RootFolder& root, const fs::path& path, bool make) {
    cv::Descriptor folder = root.open(path, O_PATH | O_DIRECTORY);
    if (folder.isOpen() || errno != ENOENT || !make || path == path.root_path()) {
        return folder;
    }
    const cv::Descriptor parent = openFolder(root, path.parent_path(), make);
    if (!parent.isOpen() || mkdirat(parent.get(), path.filename().c_str(), 0755) != 0) {
        fail(path);
    }
    return root.open(path, O_PATH | O_DIRECTORY);
}

}  // namespace

InstallStatus installStatus(const std::string& word, const std::string& folder) {
    if (word == "on") {
        return {word, "", UPDATES_ENABLED + std::string("\n")};
    }
    if (word == "off") {
        return {word, "", UPDATES_DISABLED + std::string("\n")};
    }
    if (word == "none" || word == "as-is") {
        return {word, "", std::nullopt, word == "as-is"};
    }
    const fs::path file = (fs::path(folder) / word).lexically_normal();
    const std::string name = file.filename();
    if (name.empty() || name == "*") {
        throw Failure(ExitStatus::Usage, "'" + word + "' is not the name of an install-status file");
    }
    return {name, file, readInput(file, "install-status file")};
}

void putInstallStatus(const RootFolder& root, const InstallStatus& status) {
    if (status.isKept) {
        return;
    }
    const fs::path path = INSTALL_STATUS_FILE;
    const cv::Descriptor folder = openFolder(root, path.parent_path(), status.content.has_value());
    if (!folder.isOpen()) {
        return errno == ENOENT ? void() : fail(path);
    }
    const std::string name = path.filename();
    if (unlinkat(folder.get(), name.c_str(), 0) != 0 && errno != ENOENT) {
        fail(path);
    }
    if (!status.content) {
        return;
    }
    const cv::Descriptor file(openat(folder.get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    errno = file.isOpen() ? cv::writeAll(file.get(), *status.content) : errno;
    if (errno != 0) {
        fail(path);
    }
}

}  // namespace host
