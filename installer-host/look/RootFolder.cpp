#include "installer-host/look/RootFolder.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

#include "installer-host/ExitStatus.h"

namespace host {

namespace {

int openResolving(int folder, const char* path, int flags, unsigned resolve) {
    open_how how{};
    how.flags = static_cast<unsigned>(flags);
    how.resolve = resolve;
    return static_cast<int>(syscall(SYS_openat2, folder, path, &how, sizeof how));
}

int openInside(int folder, const char* path, int flags) {
    const int fd = openResolving(folder, path, flags, RESOLVE_IN_ROOT);
    if (fd >= 0 || errno != ENOSYS) {
        return fd;
    }
    // Kernels before 5.6: a link out of the root is then followed.
    return openat(folder, path + std::strspn(path, "/"), flags);
}

/// Opens with `flags`, and leaves the access time alone where the system lets us.
template <typename Open>
cv::Descriptor openQuietly(int flags, Open open) {
    cv::Descriptor file(open(flags | O_NOATIME));
    return file.isOpen() || errno != EPERM ? std::move(file) : cv::Descriptor(open(flags));
}

/// The first of `path`'s names, as many as the system takes at once, or just one; they are taken off `path`.
std::string takeNames(std::string_view& path, bool onlyOne) {
    constexpr std::size_t MOST_BYTES = PATH_MAX - 2;
    std::size_t end = path.size();
    if (onlyOne || end > MOST_BYTES) {
        end = onlyOne ? path.find('/') : path.rfind('/', MOST_BYTES);
    }
    const std::string names(path.substr(0, end));
    path.remove_prefix(std::min(names.size() + 1, path.size()));
    return names;
}

/// Opens the folder at `path`, relative and not empty, below `folder`, without following a link anywhere.
int openWithoutLinks(int folder, std::string_view path, int flags) {
    bool nameByName = false;
    cv::Descriptor reached;
    while (!path.empty()) {
        std::string_view rest = path;
        const std::string names = takeNames(rest, nameByName);
        const int how = (rest.empty() ? flags : O_PATH) | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
        const int from = reached.isOpen() ? reached.get() : folder;
        cv::Descriptor next(nameByName ? openat(from, names.c_str(), how)
                                       : openResolving(from, names.c_str(), how, RESOLVE_NO_SYMLINKS));
        if (!next.isOpen() && errno == ENOSYS && !nameByName) {
            nameByName = true;  // kernels before 5.6
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

}  // namespace

RootFolder::RootFolder(const std::string& path)
    : folder_(::open(path.empty() ? "/" : path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)), machine_(path.empty()) {
    if (!folder_.isOpen()) {
        const std::string reason = cv::errorText(errno);
        throw Failure(ExitStatus::RootNotMade, "the private root '" + path + "' cannot be used: " + reason +
                                                   "\nMake an empty one with: mkdir -p '" + path + "'");
    }
}

cv::Descriptor RootFolder::open(const std::string& path, int flags) const {
    const auto attempt = [&](int more) {
        const int all = flags | more | O_CLOEXEC;
        return cv::Descriptor(machine_ ? ::open(path.c_str(), all) : openInside(folder_.get(), path.c_str(), all));
    };
    if ((flags & O_PATH) != 0) {
        return attempt(0);
    }
    return openQuietly(O_NONBLOCK, [&](int more) { return attempt(more).release(); });
}

cv::Descriptor RootFolder::openFolder(std::string_view path) const {
    path.remove_prefix(1);
    return openQuietly(O_RDONLY | O_DIRECTORY | O_CLOEXEC, [&](int flags) {
        return path.empty() ? openat(folder_.get(), ".", flags) : openWithoutLinks(folder_.get(), path, flags);
    });
}

}  // namespace host
