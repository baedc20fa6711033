#include "installer-host/run/ThrowAwayFolder.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <vector>

#include "installer-host/Activity.h"
#include "installer-host/ExitStatus.h"
#include "installer-host/look/Places.h"
#include "installer-host/look/PrivateFolders.h"
#include "platform/Descriptor.h"

namespace host {

namespace {

namespace fs = std::filesystem;

/// Whether what is made in `folder` would change the root: in one of its private folders, or, but for the machine's
/// root, anywhere in it.
bool isInRoot(const fs::path& folder, const std::string& root) {
    return std::any_of(std::begin(PRIVATE_FOLDERS), std::end(PRIVATE_FOLDERS),
                       [&](const char* name) { return liesIn(folder, pathInRoot(root, name)); }) ||
           (root != "/" && liesIn(folder, root));
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

/// Removes the folder, in which the bundle's code may have nested folders deeper than any path is long.
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

/// What matters is elsewhere: nothing is lost with a folder that stays.
void removeQuietly(const std::string& path) noexcept {
    try {
        const Activity activity("removing a temporary copy");
        removeAll(path);
    } catch (...) {
        return;
    }
}

}  // namespace

ThrowAwayFolder::ThrowAwayFolder(const std::string& root) : path_(makeFolder(root)) {}

ThrowAwayFolder::~ThrowAwayFolder() {
    removeQuietly(path_);
}

}  // namespace host
