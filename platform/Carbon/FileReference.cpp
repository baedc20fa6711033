#include "platform/Carbon/FileReference.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/Carbon/Errors.h"
#include "platform/StoreFailures.h"

static_assert(sizeof(FSRef::path) == PATH_MAX, "a reference has room for every path that realpath gives");

namespace cv {

OpenReference::OpenReference(const FSRef* ref) {
    if (ref == nullptr) {
        error_ = paramErr;
        return;
    }
    if (ref->path[0] != '/' || std::memchr(ref->path, '\0', sizeof ref->path) == nullptr) {
        error_ = errFSBadFSRef;
        return;
    }
    descriptor_ = Descriptor(open(ref->path, O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!descriptor_.isOpen() || fstat(descriptor_.get(), &status_) != 0) {
        const bool isGone = errno == ENOENT || errno == ENOTDIR || errno == ELOOP;
        systemError_ = isGone ? 0 : errno;
        error_ = isGone ? OSErr{errFSBadFSRef} : fileError(errno);
    } else if (status_.st_dev != ref->device || status_.st_ino != ref->inode) {
        error_ = errFSBadFSRef;
    }
}

namespace {

std::string withoutTrailingSlashes(const char* path) {
    std::string text = path;
    text.erase(text.find_last_not_of('/') + 1);
    return text.empty() ? "/" : text;
}

std::string folderOf(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

/// Writes the absolute path without links into `resolved` (PATH_MAX bytes); false with errno when there is none.
bool resolve(const std::string& path, bool followLeaf, char* resolved) {
    struct stat status {};
    if (followLeaf || lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
        return realpath(path.c_str(), resolved) != nullptr;
    }
    if (realpath(folderOf(path).c_str(), resolved) == nullptr) {
        return false;
    }
    std::string whole = withoutTrailingSlashes(resolved);
    whole += whole == "/" ? "" : "/";
    whole += path.substr(path.rfind('/') + 1);
    if (whole.size() >= PATH_MAX) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::memcpy(resolved, whole.c_str(), whole.size() + 1);
    return true;
}

/// What it means that resolving `path` failed with `error`, an errno value.
OSErr resolveError(const std::string& path, int error) {
    const bool folderIsMissing = error == ENOENT && access(folderOf(path).c_str(), F_OK) != 0;
    return folderIsMissing ? OSErr{dirNFErr} : fileError(error);
}

OSErr findObject(const char* path, bool followLeaf, FSRef& ref, Boolean* isDirectory) {
    const std::string wanted = withoutTrailingSlashes(path);
    FSRef found{};
    struct stat status {};
    if (!resolve(wanted, followLeaf, found.path) || lstat(found.path, &status) != 0) {
        const int error = errno;
        if (error != ENOENT && error != ENOTDIR) {
            lookupFailed(wanted.c_str(), errorName(error));
        }
        return resolveError(wanted, error);
    }
    found.device = status.st_dev;
    found.inode = status.st_ino;
    ref = found;
    if (isDirectory != nullptr) {
        *isDirectory = S_ISDIR(status.st_mode);
    }
    return noErr;
}

}  // namespace

}  // namespace cv

OSStatus FSPathMakeRefWithOptions(const UInt8* path, OptionBits options, FSRef* ref, Boolean* isDirectory) {
    if (path == nullptr || path[0] != '/' || ref == nullptr ||
        (options & ~UInt32{kFSPathMakeRefDoNotFollowLeafSymlink})) {
        return paramErr;
    }
    const bool followLeaf = (options & kFSPathMakeRefDoNotFollowLeafSymlink) == 0;
    const char* const text = reinterpret_cast<const char*>(path);
    const OSErr error = cv::orMemoryError([&] { return cv::findObject(text, followLeaf, *ref, isDirectory); });
    if (error == memFullErr) {
        cv::lookupFailed(text, cv::errorName(ENOMEM));
    }
    return error;
}

OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory) {
    return FSPathMakeRefWithOptions(path, kFSPathMakeRefDefaultOptions, ref, isDirectory);
}
