#include "installer-host/run/DryRunCopy.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "installer-host/ExitStatus.h"
#include "installer-host/look/PrivateFolders.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/Sandbox.h"
#include "platform/Descriptor.h"

namespace host {

namespace {

namespace fs = std::filesystem;

std::string makeTemporaryFolder() {
    const char* parent = std::getenv("TMPDIR");
    // Not /tmp: it is often kept in memory, where older kernels keep no extended attributes.
    std::string path = parent != nullptr && *parent != '\0' ? parent : "/var/tmp";
    path += "/installer-host-" + std::string(6, 'X');
    if (mkdtemp(path.data()) == nullptr) {
        throw Failure(ExitStatus::RootNotMade, "the copy for the dry run cannot be made at '" + path +
                                                   "': " + cv::errorText(errno) +
                                                   "\nSet TMPDIR to a folder on a disk that you may write to.");
    }
    return fs::canonical(path);
}

/// Lets the user list and empty every folder below `folder`.
void openFolders(const fs::path& folder) {
    std::error_code ignored;
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, ignored)) {
        if (entry.is_directory(ignored) && !entry.is_symlink(ignored)) {
            openFolders(entry.path());
        }
    }
}

}  // namespace

DryRunCopy::DryRunCopy(const std::string& root) : path_((requireBubblewrap(), makeTemporaryFolder())) {
    try {
        copyFrom(root);
    } catch (...) {
        remove();
        throw;
    }
}

DryRunCopy::~DryRunCopy() {
    remove();
}

void DryRunCopy::copyFrom(const std::string& root) {
    std::vector<std::string> command{"bwrap",
                                     "--die-with-parent",
                                     "--ro-bind",
                                     "/",
                                     "/",
                                     "--dev",
                                     "/dev",
                                     "--bind",
                                     path_,
                                     path_,
                                     "--",
                                     "cp",
                                     "-dR",
                                     "--sparse=auto",
                                     "--reflink=auto",
                                     "--preserve=mode,ownership,timestamps,links,xattr",
                                     "--"};
    const std::size_t fixed = command.size();
    for (const char* name : PRIVATE_FOLDERS) {
        const std::string folder = pathInRoot(root, name);
        if (fs::exists(fs::symlink_status(folder))) {
            command.push_back(folder);
        }
    }
    if (command.size() == fixed) {
        return;
    }
    command.push_back(path_);
    ChildOrder order;
    order.command = command;
    if (runChild(order).exitStatus != 0) {
        throw Failure(ExitStatus::RootNotMade,
                      "a faithful copy of the root '" + root + "' could not be made in '" + path_ +
                          "'; what went wrong is said above.\nRun the dry run as a user who may read all of the root, "
                          "or set TMPDIR to a folder on a disk with enough space and extended attributes.");
    }
}

void DryRunCopy::remove() noexcept {
    try {
        openFolders(path_);
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    } catch (...) {
        // Nothing that matters is lost with a copy that stays.
    }
}

}  // namespace host
