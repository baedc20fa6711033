#include "installer-host/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <optional>

#include "installer-host/ExitStatus.h"
#include "platform/Descriptor.h"
#include "platform/NewFile.h"
#include "platform/Result.h"

namespace host {

namespace {

constexpr std::string_view TEMPORARY_PREFIX = ".installer-host-";
constexpr mode_t PERMISSIONS = 0777;
constexpr mode_t NEW_FILE_MODE = 0666;  // less what the user's umask takes

/// The folder and the name of a file.
struct Place {
    std::string folder, name;
};

Place placeOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return {".", path};
    }
    return {path.substr(0, slash + 1), path.substr(slash + 1)};
}

/// The mode of the file that stands there; nothing when none does. Throws cv::Fault when it is something else.
std::optional<mode_t> modeOfOld(int folder, const std::string& name) {
    struct stat old {};
    if (fstatat(folder, name.c_str(), &old, AT_SYMLINK_NOFOLLOW) != 0) {
        return std::nullopt;
    }
    if (!S_ISREG(old.st_mode)) {
        throw cv::Fault{name, S_ISLNK(old.st_mode) ? "it is a link" : "it is not a file"};
    }
    return old.st_mode & PERMISSIONS;
}

void replaceIn(int folder, const std::string& name, std::string_view bytes) {
    const std::optional<mode_t> mode = modeOfOld(folder, name);
    cv::NewFile file(folder, name, TEMPORARY_PREFIX, NEW_FILE_MODE);
    file.write(bytes);
    if (mode && fchmod(file.descriptor(), *mode) != 0) {
        cv::failWith(name, errno);
    }
    file.flush();
    file.replace(name);
}

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    throw Failure(ExitStatus::NotStored, "'" + path + "' could not be written: " + reason);
}

}  // namespace

void replaceFile(const std::string& path, std::string_view bytes) {
    const Place place = placeOf(path);
    const cv::Descriptor folder(open(place.folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen()) {
        fail(path, cv::errorText(errno));
    }
    try {
        replaceIn(folder.get(), place.name.empty() ? "." : place.name, bytes);
    } catch (const cv::Fault& fault) {
        fail(path, fault.reason);
    }
}

}  // namespace host
