#include "installer-host/look/RootFolder.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "installer-host/ExitStatus.h"
#include "installer-host/look/PrivateFolders.h"

namespace host {

namespace {

constexpr int ONLY_NAMED = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

int openFrom(int folder, const char* path, int flags, unsigned resolve) {
    open_how how{};
    how.flags = static_cast<unsigned>(flags);
    how.resolve = resolve;
    return static_cast<int>(syscall(SYS_openat2, folder, path, &how, sizeof how));
}

/// Kernels before 5.6 have no openat2; a link is followed wherever it leads then.
bool isTooOld(int fd) {
    return fd < 0 && errno == ENOSYS;
}

int openInside(int folder, const char* path, int flags) {
    const int fd = openFrom(folder, path, flags, RESOLVE_IN_ROOT);
    return isTooOld(fd) ? openat(folder, path + std::strspn(path, "/"), flags) : fd;
}

int openWithoutLinks(int folder, const char* path, int flags) {
    const int fd = openFrom(folder, path, flags, RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS);
    return isTooOld(fd) ? openat(folder, path, flags | O_NOFOLLOW) : fd;
}

int openRoot(const char* path) {
    const int fd = openFrom(AT_FDCWD, path, ONLY_NAMED, RESOLVE_NO_SYMLINKS);
    return isTooOld(fd) ? ::open(path, ONLY_NAMED) : fd;
}

/// What `path` is called below the private folder `name`: "." for that itself. Null when it lies elsewhere.
const char* pathBelow(const std::string& path, const char* name) {
    const std::size_t size = std::strlen(name);
    if (path.compare(0, size, name) != 0 || (path.size() > size && path[size] != '/')) {
        return nullptr;
    }
    const char* rest = path.c_str() + size;
    rest += std::strspn(rest, "/");
    return *rest == '\0' ? "." : rest;
}

}  // namespace

RootFolder::RootFolder(const std::string& path)
    : path_(path), folder_(openRoot(path.empty() ? "/" : path.c_str())), machine_(path.empty()) {
    if (!folder_.isOpen()) {
        throw Failure(ExitStatus::RootNotMade,
                      "the private root '" + path + "' cannot be used: " + cv::errorText(errno),
                      "Make an empty one with: mkdir -p '" + path + "'");
    }
    if (!machine_) {
        for (const char* name : PRIVATE_FOLDERS) {
            openPrivateFolder(name);
        }
    }
}

std::string RootFolder::pathOf(const char* name) const {
    return pathInRoot(path_, name);
}

bool RootFolder::openPrivateFolder(const char* name) {
    cv::Descriptor folder(openat(folder_.get(), name + 1, ONLY_NAMED));
    if (folder.isOpen()) {
        folders_.push_back({name, std::move(folder)});
        return true;
    }
    if (errno != ENOENT) {
        const bool isOther = errno == ENOTDIR || errno == ELOOP;
        throw Failure(ExitStatus::RootNotMade,
                      "the private root cannot be used: '" + pathOf(name) + "' " +
                          (isOther ? "is not a folder" : "cannot be opened: " + cv::errorText(errno)),
                      isOther ? "A link could lead out of the root. Put a folder in its place." : "");
    }
    return false;
}

void RootFolder::makePrivateFolders() {
    for (const char* name : PRIVATE_FOLDERS) {
        const bool isThere = std::any_of(folders_.begin(), folders_.end(),
                                         [&](const PrivateFolder& folder) { return folder.name == name; });
        if (isThere || machine_) {
            continue;
        }
        if ((mkdirat(folder_.get(), name + 1, 0777) != 0 && errno != EEXIST) || !openPrivateFolder(name)) {
            throw Failure(ExitStatus::RootNotMade, "the private root cannot be used: '" + pathOf(name) +
                                                       "' cannot be made: " + cv::errorText(errno));
        }
    }
}

cv::Descriptor RootFolder::open(const std::string& path, int flags) const {
    const auto attempt = [&](int more) {
        const int all = flags | more | O_CLOEXEC;
        if (machine_) {
            return cv::Descriptor(::open(path.c_str(), all));
        }
        for (const PrivateFolder& folder : folders_) {
            const char* below = pathBelow(path, folder.name);
            cv::Descriptor file(below == nullptr ? -1 : openWithoutLinks(folder.folder.get(), below, all));
            if (file.isOpen() || (below != nullptr && errno != ELOOP)) {
                return file;
            }
        }
        return cv::Descriptor(openInside(folder_.get(), path.c_str(), all));
    };
    if ((flags & O_PATH) != 0) {
        return attempt(0);
    }
    cv::Descriptor file = attempt(O_NOATIME | O_NONBLOCK);
    return file.isOpen() || errno != EPERM ? std::move(file) : attempt(O_NONBLOCK);
}

}  // namespace host
