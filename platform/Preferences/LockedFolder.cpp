#include "platform/Preferences/LockedFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <memory>
#include <new>
#include <utility>

#include "platform/Result.h"

namespace cv {

namespace {

// A temporary file's name has a length of its own, so that every name a preference file can have is possible.
constexpr std::string_view TEMPORARY_PREFIX = ".preferences-";
constexpr std::string_view TEMPORARY_SUFFIX = ".new";
constexpr std::size_t RANDOM_DIGITS = 16;

std::string randomName(const std::string& path) {
    std::uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number) {
        throw Fault{path, "there is no random number to name a temporary file with: " + errorText(errno)};
    }
    char digits[RANDOM_DIGITS + 1];
    static_cast<void>(std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(number)));
    return std::string(TEMPORARY_PREFIX) + digits + std::string(TEMPORARY_SUFFIX);
}

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

}  // namespace

bool isTemporaryName(std::string_view name) {
    const std::size_t length = TEMPORARY_PREFIX.size() + RANDOM_DIGITS + TEMPORARY_SUFFIX.size();
    return name.size() == length && name.substr(0, TEMPORARY_PREFIX.size()) == TEMPORARY_PREFIX &&
           name.substr(length - TEMPORARY_SUFFIX.size()) == TEMPORARY_SUFFIX &&
           name.find_first_not_of("0123456789abcdef", TEMPORARY_PREFIX.size()) == length - TEMPORARY_SUFFIX.size();
}

void failWith(const std::string& path, int error) {
    if (error == ENOMEM) {
        throw std::bad_alloc();
    }
    throw Fault{path, errorText(error)};
}

void flushFolder(int folder, const std::string& path) {
    if (fsync(folder) != 0 && errno != EINVAL) {
        failWith(path, errno);
    }
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
                           const std::function<void()>& makeRoom) const {
    put(name, bytes, complete, [&](const char* temporary) {
        if (makeRoom) {
            makeRoom();
        }
        if (renameat(folder_.get(), temporary, folder_.get(), name.c_str()) != 0) {
            failWith(pathOf(name), errno);
        }
    });
}

void LockedFolder::make(const std::string& name, std::string_view bytes,
                        const std::function<void(int fd)>& complete) const {
    put(name, bytes, complete, [&](const char* temporary) {
        // Unlike a rename, a link works on every file system, and replaces nothing.
        if (linkat(folder_.get(), temporary, folder_.get(), name.c_str(), 0) != 0) {
            failWith(pathOf(name), errno);
        }
        unlinkat(folder_.get(), temporary, 0);
    });
}

void LockedFolder::put(const std::string& name, std::string_view bytes, const std::function<void(int fd)>& complete,
                       const std::function<void(const char* temporary)>& moveIntoPlace) const {
    const std::string temporary = randomName(pathOf(name));
    try {
        writeTemporary(temporary, bytes, complete);
        moveIntoPlace(temporary.c_str());
    } catch (Fault& fault) {
        unlinkat(folder_.get(), temporary.c_str(), 0);
        fault.what = pathOf(name);
        throw;
    } catch (...) {
        unlinkat(folder_.get(), temporary.c_str(), 0);
        throw;
    }
    flushFolder(folder_.get(), path_);
}

void LockedFolder::writeTemporary(const std::string& name, std::string_view bytes,
                                  const std::function<void(int fd)>& complete) const {
    const Descriptor file(
        openat(folder_.get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file.isOpen()) {
        failWith(pathOf(name), errno);
    }
    if (const int error = writeAll(file.get(), bytes)) {
        failWith(pathOf(name), error);
    }
    complete(file.get());
    if (fsync(file.get()) != 0) {
        failWith(pathOf(name), errno);
    }
}

void LockedFolder::remove(const std::string& name) const {
    if (unlinkat(folder_.get(), name.c_str(), 0) != 0) {
        failWith(pathOf(name), errno);
    }
    flushFolder(folder_.get(), path_);
}

}  // namespace cv
