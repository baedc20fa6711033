#include "platform/Preferences/LockedFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <memory>
#include <utility>

namespace cv {

namespace {

constexpr std::string_view TEMPORARY_PREFIX = ".preferences-";
constexpr mode_t OWNER_ALONE = S_IRUSR | S_IWUSR;

/// Whether the lock was there to take at once.
bool tryToLock(int folder, const std::string& path) {
    if (flock(folder, LOCK_EX | LOCK_NB) == 0) {
        return true;
    }
    if (errno != EWOULDBLOCK && errno != EINTR) {
        failWith(path, errno);
    }
    return false;
}

void waitForLock(int folder, const std::string& path) {
    while (flock(folder, LOCK_EX) != 0) {
        if (errno != EINTR) {
            failWith(path, errno);
        }
    }
}

void fill(const NewFile& file, std::string_view bytes, const std::function<void(int fd)>& complete) {
    file.write(bytes);
    complete(file.descriptor());
    file.flush();
}

}  // namespace

bool isTemporaryName(std::string_view name) {
    return isTemporaryName(name, TEMPORARY_PREFIX);
}

LockedFolder::LockedFolder(Descriptor folder, std::string path, const std::function<void()>& perWait)
    : folder_(std::move(folder)), path_(std::move(path)) {
    if (!perWait) {
        waitForLock(folder_.get(), path_);
        return;
    }
    constexpr timespec PAUSE{0, 20'000'000};
    while (!tryToLock(folder_.get(), path_)) {
        perWait();
        nanosleep(&PAUSE, nullptr);
    }
}

void LockedFolder::removeLeftovers() const {
    const int fd = openat(folder_.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) {
        failWith(path_, errno);
    }
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(fdopendir(fd), closedir);
    if (entries == nullptr) {
        const int error = errno;
        close(fd);
        failWith(path_, error);
    }
    errno = 0;
    while (const dirent* entry = readdir(entries.get())) {
        if (isTemporaryName(entry->d_name)) {
            unlinkat(folder_.get(), entry->d_name, 0);
        }
        errno = 0;
    }
    if (errno != 0) {
        failWith(path_, errno);
    }
}

void LockedFolder::replace(const std::string& name, std::string_view bytes, const std::function<void(int fd)>& complete,
                           const std::function<void()>& beforeReplacing) const {
    NewFile file(folder_.get(), pathOf(name), TEMPORARY_PREFIX, OWNER_ALONE);
    fill(file, bytes, complete);
    if (beforeReplacing) {
        beforeReplacing();
    }
    file.replace(name);
}

void LockedFolder::make(const std::string& name, std::string_view bytes,
                        const std::function<void(int fd)>& complete) const {
    NewFile file(folder_.get(), pathOf(name), TEMPORARY_PREFIX, OWNER_ALONE);
    fill(file, bytes, complete);
    file.make(name);
}

void LockedFolder::remove(const std::string& name) const {
    if (unlinkat(folder_.get(), name.c_str(), 0) != 0) {
        failWith(pathOf(name), errno);
    }
    flushFolder(folder_.get(), path_);
}

}  // namespace cv
