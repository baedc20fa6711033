#include "installer-host/look/RootFolder.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "installer-host/ExitStatus.h"

namespace host {

namespace {

int openInside(int folder, const char* path, int flags) {
    open_how how{};
    how.flags = static_cast<unsigned>(flags);
    how.resolve = RESOLVE_IN_ROOT;
    const int fd = static_cast<int>(syscall(SYS_openat2, folder, path, &how, sizeof how));
    if (fd >= 0 || errno != ENOSYS) {
        return fd;
    }
    // Kernels before 5.6: a link out of the root is then followed.
    return openat(folder, path + std::strspn(path, "/"), flags);
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
    cv::Descriptor file = attempt(O_NOATIME | O_NONBLOCK);
    return file.isOpen() || errno != EPERM ? std::move(file) : attempt(O_NONBLOCK);
}

}  // namespace host
