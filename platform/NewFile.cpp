#include "platform/NewFile.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <new>
#include <utility>

#include "platform/Result.h"

namespace cv {

namespace {

// A temporary file's name has a length of its own, so that every name a file can have is possible.
constexpr std::size_t RANDOM_DIGITS = 16;
constexpr std::string_view TEMPORARY_SUFFIX = ".new";

std::string randomName(std::string_view prefix, const std::string& path) {
    std::uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number) {
        throw Fault{path, "there is no random number to name a temporary file with: " + errorText(errno)};
    }
    char digits[RANDOM_DIGITS + 1];
    static_cast<void>(std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(number)));
    return std::string(prefix) + digits + std::string(TEMPORARY_SUFFIX);
}

}  // namespace

bool isTemporaryName(std::string_view name, std::string_view prefix) {
    const std::size_t length = prefix.size() + RANDOM_DIGITS + TEMPORARY_SUFFIX.size();
    return name.size() == length && name.substr(0, prefix.size()) == prefix &&
           name.substr(length - TEMPORARY_SUFFIX.size()) == TEMPORARY_SUFFIX &&
           name.find_first_not_of("0123456789abcdef", prefix.size()) == length - TEMPORARY_SUFFIX.size();
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

NewFile::NewFile(int folder, std::string path, std::string_view prefix, mode_t mode)
    : folder_(folder),
      path_(std::move(path)),
      temporary_(randomName(prefix, path_)),
      file_(openat(folder, temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode)) {
    if (!file_.isOpen()) {
        failWith(path_, errno);
    }
}

NewFile::~NewFile() {
    if (!temporary_.empty()) {
        unlinkat(folder_, temporary_.c_str(), 0);
    }
}

void NewFile::write(std::string_view bytes) const {
    if (const int error = writeAll(file_.get(), bytes)) {
        failWith(path_, error);
    }
}

void NewFile::flush() const {
    if (fsync(file_.get()) != 0) {
        failWith(path_, errno);
    }
}

void NewFile::replace(const std::string& name) {
    if (renameat(folder_, temporary_.c_str(), folder_, name.c_str()) != 0) {
        failWith(path_, errno);
    }
    temporary_.clear();
    flushFolder(folder_, path_);
}

void NewFile::make(const std::string& name) {
    // Unlike a rename, a link works on every file system, and replaces nothing.
    if (linkat(folder_, temporary_.c_str(), folder_, name.c_str(), 0) != 0) {
        failWith(path_, errno);
    }
    unlinkat(folder_, temporary_.c_str(), 0);
    temporary_.clear();
    flushFolder(folder_, path_);
}

}  // namespace cv
