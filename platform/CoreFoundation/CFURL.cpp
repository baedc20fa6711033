#include <Carbon/Files.h>
#include <CoreFoundation/CFURL.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <optional>

#include "platform/CoreFoundation/String.h"

namespace {

extern const objc_class URL_CLASS;

}  // namespace

/// A file URL: the path's bytes as they are, absolute and without slashes at the end, and how the URL is written.
struct __CFURL : objc_object {
    __CFURL(std::string location, bool folder) : objc_object(URL_CLASS), path(std::move(location)), isFolder(folder) {}
    bool operator==(const __CFURL& other) const noexcept { return path == other.path && isFolder == other.isFolder; }
    CFHashCode hash() const noexcept { return std::hash<std::string>()(path); }

    const std::string path;
    const bool isFolder;
};

namespace {

const objc_class URL_CLASS("NSURL", cv::OBJECT_METACLASS, &cv::OBJECT_CLASS, nullptr, cv::valueOf<__CFURL>());

/// `path` made absolute with the working folder; nothing when that cannot be found.
std::optional<std::string> absolute(std::string_view path) {
    if (path.front() == '/') {
        return std::string(path);
    }
    const std::unique_ptr<char, decltype(&std::free)> folder(getcwd(nullptr, 0), &std::free);
    if (folder == nullptr) {
        if (errno == ENOMEM) {
            throw std::bad_alloc();
        }
        return std::nullopt;
    }
    return std::string(folder.get()) + "/" + std::string(path);
}

CFURLRef createURL(std::string_view path, bool isFolder) {
    if (path.empty() || path.find('\0') != std::string_view::npos) {
        return nullptr;
    }
    std::optional<std::string> whole = absolute(path);
    if (!whole) {
        return nullptr;
    }
    whole->resize(std::max<std::size_t>(whole->find_last_not_of('/') + 1, 1));
    return new __CFURL(std::move(*whole), isFolder);
}

}  // namespace

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef, CFStringRef path, CFURLPathStyle style, Boolean isDirectory) {
    const auto bytes = style == kCFURLPOSIXPathStyle ? cv::utf8Of(path) : std::nullopt;
    return bytes ? createURL(*bytes, isDirectory) : nullptr;
}

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef, const UInt8* path, CFIndex byteCount,
                                                 Boolean isDirectory) {
    if (path == nullptr || byteCount < 0) {
        return nullptr;
    }
    return createURL({reinterpret_cast<const char*>(path), static_cast<std::size_t>(byteCount)}, isDirectory);
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean, UInt8* buffer, CFIndex bufferSize) {
    if (bufferSize < 0 || url->path.size() >= static_cast<std::size_t>(bufferSize)) {
        return false;
    }
    std::memcpy(buffer, url->path.c_str(), url->path.size() + 1);
    return true;
}

Boolean CFURLGetFSRef(CFURLRef url, FSRef* ref) {
    return FSPathMakeRef(reinterpret_cast<const UInt8*>(url->path.c_str()), ref, nullptr) == noErr;
}
