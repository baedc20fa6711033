#include "installer-host/look/RootFolder.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

#include "installer-host/ExitStatus.h"
#include "installer-host/look/PrivateFolders.h"
#include "installer-host/look/QuietOpen.h"

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

/// Takes the first names off `path`: as many as the system takes at once, or just one.
std::string takeNames(std::string_view& path, bool onlyOne) {
    constexpr std::size_t MOST_BYTES = PATH_MAX - 2;
    std::size_t end = path.size();
    if (onlyOne || end > MOST_BYTES) {
        end = onlyOne ? path.find('/') : path.rfind('/', MOST_BYTES);
    }
    std::string names(path.substr(0, end));
    path.remove_prefix(std::min(names.size() + 1, path.size()));
    return names;
}

/// Opens the folder at `path`, which may be of any length, below `folder`.
int openFolderWithoutLinks(int folder, std::string_view path, int flags) {
    bool isOld = false;
    cv::Descriptor reached;
    while (!path.empty()) {
        std::string_view rest = path;
        const std::string names = takeNames(rest, isOld);
        const int how = rest.empty() ? flags | O_NOFOLLOW : ONLY_NAMED;
        const int from = reached.isOpen() ? reached.get() : folder;
        cv::Descriptor next(isOld ? openat(from, names.c_str(), how)
                                  : openFrom(from, names.c_str(), how, RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS));
        if (!isOld && isTooOld(next.get())) {
            isOld = true;
            continue;
        }
        if (!next.isOpen()) {
            return -1;
        }
        reached = std::move(next);
        path = rest;
    }
    return reached.release();
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
    // The look reports a folder that may not be opened: it exists and is unreadable.
    if (errno != ENOENT && errno != EACCES) {
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
    return openQuietly(O_NONBLOCK, [&](int more) { return attempt(more).release(); });
}

cv::Descriptor RootFolder::openFolder(const std::string& path) const {
    int from = folder_.get();
    const char* below = path.size() == 1 ? "." : path.c_str() + 1;
    for (const PrivateFolder& folder : folders_) {
        if (const char* inside = pathBelow(path, folder.name)) {
            from = folder.folder.get();
            below = inside;
        }
    }
    return openQuietly(O_RDONLY | O_DIRECTORY | O_CLOEXEC,
                       [&](int flags) { return openFolderWithoutLinks(from, below, flags); });
}

}  // namespace host
