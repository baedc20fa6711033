#include "CvBase/Util/FolderScan.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <climits>
#include <cstring>
#include <string>

namespace Util {

namespace {

/// The length of the text that `pathOf` puts in front of an ordinary name when that text is `folder` with a slash at
/// its end, else 0.
std::size_t plainLength(const String& folder, const std::function<String(const String&)>& pathOf) {
    const std::string path = pathOf("x").CStr();
    const std::string start = path.substr(0, path.empty() ? 0 : path.size() - 1);
    const std::string text = folder.CStr();
    const bool isPlain =
        path == start + "x" && (start == text || start == text + "/") && !start.empty() && start.back() == '/';
    return isPlain ? start.size() : 0;
}

String withoutTrailingSlashes(const String& path) {
    unsigned int length = path.Length();
    while (length > 1 && path.CStr()[length - 1] == '/') {
        --length;
    }
    return path.Left(length);
}

}  // namespace

FolderScan::FolderScan(const String& folder, std::function<String(const String&)> pathOf)
    : pathOf_(std::move(pathOf)), folder_(opendir(folder.CStr())) {
    if (folder_ == nullptr) {
        return;
    }
    plainLength_ = plainLength(folder, pathOf_);
    struct stat status {};
    // Looking for "." asks for the right to search the folder; asking the descriptor does not.
    isSearchable_ = fstatat(dirfd(folder_.get()), ".", &status, 0) == 0;
    if (isSearchable_ || fstat(dirfd(folder_.get()), &status) == 0) {
        identity_ = {status.st_dev, status.st_ino};
    }
}

bool FolderScan::next() {
    do {
        entry_ = readdir(folder_.get());
    } while (entry_ != nullptr && (std::strcmp(name(), ".") == 0 || std::strcmp(name(), "..") == 0 || *name() == '\0'));
    nameLength_ = entry_ != nullptr ? std::strlen(name()) : 0;
    return entry_ != nullptr;
}

bool FolderScan::hasPlainPath() const {
    return plainLength_ != 0 && plainLength_ + nameLength_ < PATH_MAX &&
           std::memchr(name(), '\\', nameLength_) == nullptr;
}

FolderScan::Kind FolderScan::kind() const {
    const bool isPlain = hasPlainPath();
    if (isPlain && isSearchable_ && entry_->d_type == DT_REG) {
        return Kind::FILE;
    }
    struct stat status {};
    const bool isThere = isPlain ? fstatat(dirfd(folder_.get()), name(), &status, 0) == 0
                                 : stat(withoutTrailingSlashes(pathOf_(name())).CStr(), &status) == 0;
    if (!isThere) {
        return Kind::MISSING;
    }
    return S_ISREG(status.st_mode) ? Kind::FILE : Kind::FOLDER;
}

FolderScan::Kind FolderScan::likelyKind() const {
    return entry_->d_type == DT_DIR && hasPlainPath() ? Kind::FOLDER : kind();
}

}  // namespace Util
