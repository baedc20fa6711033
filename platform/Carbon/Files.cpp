#include <Carbon/Files.h>
#include <endian.h>
#include <fcntl.h>
#include <sys/xattr.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "platform/Carbon/Errors.h"
#include "platform/Carbon/FileReference.h"
#include "platform/FinderAttribute.h"
#include "platform/StoreFailures.h"

namespace {

/// The attribute's value: the 16 bytes of FSCatalogInfo, then 16 of extended Finder information, big-endian.
using FinderInfo = std::array<UInt8, cv::FINDER_INFO_SIZE>;

static_assert(sizeof(FileInfo) == 16 && sizeof(FSCatalogInfo::finderInfo) == 16);
static_assert(offsetof(FileInfo, finderFlags) == cv::FINDER_FLAGS_OFFSET);

template <typename Word>
void swapWord(UInt8* bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    if constexpr (sizeof word == 4) {
        word = be32toh(word);
    } else {
        word = be16toh(word);
    }
    std::memcpy(bytes, &word, sizeof word);
}

/// Turns FSCatalogInfo's 16 bytes from the disk's order to the processor's, or back. A file begins with two 32-bit
/// codes; all else, in files and folders, is 16-bit words.
void swapFinderInfo(UInt8* bytes, bool isFolder) {
    std::size_t offset = 0;
    for (; !isFolder && offset < offsetof(FileInfo, finderFlags); offset += sizeof(UInt32)) {
        swapWord<UInt32>(bytes + offset);
    }
    for (; offset < sizeof(FileInfo); offset += sizeof(UInt16)) {
        swapWord<UInt16>(bytes + offset);
    }
}

/// A path that leads to the opened object itself: attributes cannot be reached through an O_PATH descriptor, and
/// opening the object for real would ask for the right to read its contents.
struct PathOf {
    explicit PathOf(const cv::OpenReference& object) {
        std::snprintf(text, sizeof text, "/proc/self/fd/%d", object.descriptor());
    }
    char text[32];
};

/// Why Finder information cannot be read.
struct FinderFault {
    OSErr error = noErr;
    const char* reason = "";
};

FinderFault readFinderInfo(const cv::OpenReference& object, FinderInfo& info) {
    if (object.error() != noErr) {
        return {object.error(), cv::errorName(object.systemError())};
    }
    const ssize_t size = getxattr(PathOf(object).text, cv::FINDER_INFO_ATTRIBUTE, info.data(), info.size());
    if (size == static_cast<ssize_t>(info.size())) {
        return {};
    }
    if (size >= 0 || errno == ERANGE) {
        return {ioErr, cv::FINDER_INFO_HAS_WRONG_SIZE};
    }
    if (errno == ENODATA || errno == ENOTSUP) {
        info.fill(0);
        return {};
    }
    return {errno == EACCES || errno == EPERM ? OSErr{afpAccessDenied} : OSErr{ioErr}, cv::errorName(errno)};
}

/// Whether reading and storing can do what they are asked for.
bool isValidRequest(const FSRef* ref, FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo) {
    return ref != nullptr && (whichInfo & ~FSCatalogInfoBitmap{kFSCatInfoFinderInfo}) == 0 &&
           (whichInfo == 0 || catalogInfo != nullptr);
}

OSErr storeFinderInfo(const FSRef& ref, const FSCatalogInfo& catalogInfo) {
    const cv::OpenReference object(&ref);
    FinderInfo info{};
    const FinderFault fault = readFinderInfo(object, info);
    if (fault.error == errFSBadFSRef) {
        return fault.error;
    }
    if (fault.error != noErr) {
        cv::storeFailed(ref.path, fault.reason);
        return fault.error;
    }
    std::memcpy(info.data(), catalogInfo.finderInfo, sizeof catalogInfo.finderInfo);
    swapFinderInfo(info.data(), object.isFolder());
    if (setxattr(PathOf(object).text, cv::FINDER_INFO_ATTRIBUTE, info.data(), info.size(), 0) != 0) {
        const int error = errno;
        cv::storeFailed(ref.path, cv::errorName(error));
        return cv::fileError(error);
    }
    cv::storeSucceeded(ref.path);
    return noErr;
}

}  // namespace

OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                       struct HFSUniStr255* name, struct FSSpec* spec, FSRef* parent) {
    if (name != nullptr || spec != nullptr || parent != nullptr || !isValidRequest(ref, whichInfo, catalogInfo)) {
        return paramErr;
    }
    const cv::OpenReference object(ref);
    if (whichInfo == 0) {
        return object.error();
    }
    FinderInfo info{};
    const FinderFault fault = readFinderInfo(object, info);
    if (fault.error == noErr) {
        swapFinderInfo(info.data(), object.isFolder());
        std::memcpy(catalogInfo->finderInfo, info.data(), sizeof catalogInfo->finderInfo);
    } else if (fault.error != errFSBadFSRef) {
        cv::lookupFailed(ref->path, fault.reason);
    }
    return fault.error;
}

OSErr FSSetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo) {
    if (!isValidRequest(ref, whichInfo, catalogInfo)) {
        return paramErr;
    }
    return whichInfo == 0 ? cv::OpenReference(ref).error() : storeFinderInfo(*ref, *catalogInfo);
}

OSErr FSExchangeObjects(const FSRef* a, const FSRef* b) {
    const cv::OpenReference first(a);
    const cv::OpenReference second(b);
    for (const cv::OpenReference* object : {&first, &second}) {
        if (object->error() != noErr) {
            return object->error();
        }
        if (!object->isRegularFile()) {
            return OSErr{notAFileErr};
        }
    }
    if (a->device == b->device && a->inode == b->inode) {
        return noErr;
    }
    if (renameat2(AT_FDCWD, a->path, AT_FDCWD, b->path, RENAME_EXCHANGE) == 0) {
        return noErr;
    }
    // EINVAL is how a file system says that it knows no exchange.
    return errno == EINVAL ? OSErr{errFSUnknownCall} : cv::fileError(errno);
}
