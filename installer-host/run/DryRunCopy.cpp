#include "installer-host/run/DryRunCopy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <vector>

#include "installer-host/Activity.h"
#include "installer-host/ExitStatus.h"
#include "installer-host/look/PrivateFolders.h"
#include "installer-host/look/RootFolder.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/ReadOnlyView.h"
#include "installer-host/run/TreeCopy.h"
#include "platform/Descriptor.h"

namespace host {

namespace {

namespace fs = std::filesystem;

bool isSame(const fs::path& one, const fs::path& other) {
    std::error_code error;
    return fs::equivalent(one, other, error) && !error;
}

/// Whether what is made in `folder` would change the root: in one of its private folders, or, but for the machine's
/// root, anywhere in it.
bool isInRoot(fs::path folder, const std::string& root) {
    for (;; folder = folder.parent_path()) {
        for (const char* name : PRIVATE_FOLDERS) {
            if (isSame(folder, pathInRoot(root, name))) {
                return true;
            }
        }
        if (isSame(folder, "/")) {
            return false;
        }
        if (isSame(folder, root)) {
            return true;
        }
    }
}

/// The folders that a copy may be made in, the best first. Not /tmp: it is often kept in memory, where older kernels
/// keep no extended attributes.
std::vector<std::string> temporaryFolders() {
    const char* const wanted = std::getenv("TMPDIR");
    std::vector<std::string> folders;
    if (wanted != nullptr && *wanted != '\0') {
        folders.emplace_back(wanted);
    }
    folders.emplace_back("/var/tmp");
    return folders;
}

[[noreturn]] void refusePlace(const std::string& place, const std::string& reason) {
    throw Failure(ExitStatus::RootNotMade, "the copy for the dry run cannot be made in '" + place + "': " + reason,
                  "Set TMPDIR to a folder on a disk that you may write to, outside of the root.");
}

std::string makeFolder(const std::string& root) {
    std::string refused;
    for (const std::string& parent : temporaryFolders()) {
        std::error_code error;
        const fs::path found = fs::canonical(parent, error);
        if (error) {
            refusePlace(parent, error.message());
        }
        if (isInRoot(found, root)) {
            refused = parent;
            continue;
        }
        std::string path = found / ("installer-host-" + std::string(6, 'X'));
        if (mkdtemp(path.data()) == nullptr) {
            refusePlace(parent, cv::errorText(errno));
        }
        return path;
    }
    refusePlace(refused, "it lies in the root");
}

/// Shows the user how far the copying is, and lets the user end it.
void watchCopy(Activity& activity, std::uintmax_t entries, std::uintmax_t bytes) {
    constexpr std::uintmax_t MEGABYTE = 1000000;
    if (const int signal = takeInterruption(); signal != 0) {
        throw Interrupted{signal};
    }
    activity.show("copying for the dry run: " + std::to_string(entries) + " entries, " +
                  std::to_string(bytes / MEGABYTE) + " MB");
}

void copyRoot(const std::string& root, const std::string& path) {
    const RootFolder original(root);
    if (original.privateFolders().size() < std::size(PRIVATE_FOLDERS) && access(root.c_str(), W_OK) != 0) {
        throw Failure(ExitStatus::RootNotMade,
                      "the folders of the root '" + root + "' could not be made: " + cv::errorText(errno));
    }
    const cv::Descriptor copy(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::vector<cv::Descriptor> views;
    std::vector<CopySource> sources;
    for (const RootFolder::PrivateFolder& folder : original.privateFolders()) {
        const std::string place = pathInRoot(root, folder.name);
        const cv::Descriptor& view = views.emplace_back(readOnlyView(folder.folder.get(), place));
        sources.push_back({view.isOpen() ? view.get() : folder.folder.get(), view.isOpen(), place, folder.name + 1});
    }
    Activity activity("copying for the dry run");
    copyTrees(sources, copy.get(),
              [&](std::uintmax_t entries, std::uintmax_t bytes) { watchCopy(activity, entries, bytes); });
}

void allowAll(const fs::path& folder) {
    std::error_code ignored;
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
}

/// Removes what is in `folder`, or brings it up to `top` under a new name when it is a folder. Whether it did anything.
bool emptyInto(const fs::path& top, const fs::path& folder, std::uintmax_t& next) {
    bool didAny = false;
    std::error_code error;
    allowAll(folder);
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        if (fs::symlink_status(entry.path(), error).type() != fs::file_type::directory) {
            didAny = fs::remove(entry.path(), error) || didAny;
            continue;
        }
        allowAll(entry.path());
        fs::rename(entry.path(), top / ("installer-host-" + std::to_string(next++)), error);
        didAny = didAny || !error;
    }
    return didAny;
}

/// Removes the copy, in which the bundle's code may have nested folders deeper than any path is long.
void removeAll(const fs::path& path) {
    std::error_code error;
    std::uintmax_t next = 0;
    for (bool isProgress = true; isProgress;) {
        isProgress = false;
        for (const fs::directory_entry& entry : fs::directory_iterator(path, error)) {
            isProgress = emptyInto(path, entry.path(), next) || isProgress;
            isProgress = fs::remove(entry.path(), error) || isProgress;
        }
    }
    fs::remove(path, error);
}

void removeCopy(const std::string& path) noexcept {
    try {
        const Activity activity("removing the dry run's copy");
        removeAll(path);
    } catch (...) {
        // Nothing that matters is lost with a copy that stays.
    }
}

}  // namespace

DryRunCopy::DryRunCopy(const std::string& root) : path_(makeFolder(root)) {
    try {
        copyRoot(root, path_);
    } catch (...) {
        removeCopy(path_);
        throw;
    }
}

DryRunCopy::~DryRunCopy() {
    removeCopy(path_);
}

}  // namespace host
