#include "installer-host/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "installer-host/ExitStatus.h"
#include "platform/Descriptor.h"

namespace host {

namespace {

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    throw Failure(ExitStatus::NotStored, "'" + path + "' could not be written: " + reason);
}

/// The mode that the new file gets: that of the old one, or what the user gives new files.
mode_t modeFor(const std::string& path) {
    struct stat old {};
    if (lstat(path.c_str(), &old) == 0) {
        if (!S_ISREG(old.st_mode)) {
            fail(path, S_ISLNK(old.st_mode) ? "it is a link" : "it is not a file");
        }
        return old.st_mode & 0777U;
    }
    const mode_t mask = umask(0);
    umask(mask);
    return 0666U & ~mask;
}

}  // namespace

void replaceFile(const std::string& path, std::string_view bytes) {
    const mode_t mode = modeFor(path);
    std::string temporary = path + "." + std::string(6, 'X');  // mkostemp puts the letters of a new name here
    const cv::Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (!file.isOpen()) {
        fail(path, cv::errorText(errno));
    }
    int error = cv::writeAll(file.get(), bytes);
    if (error == 0 && (fchmod(file.get(), mode) != 0 || fsync(file.get()) != 0 ||
                       std::rename(temporary.c_str(), path.c_str()) != 0)) {
        error = errno;
    }
    if (error != 0) {
        unlink(temporary.c_str());
        fail(path, cv::errorText(error));
    }
}

}  // namespace host
