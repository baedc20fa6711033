#include "installer-host/run/CopyAttributes.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string_view>
#include <vector>

#include "installer-host/ExitStatus.h"
#include "platform/Descriptor.h"

namespace host {

namespace {

/// The path by which the functions for extended attributes reach an entry of an open folder.
std::string pathBelow(int folder, const std::string& name) {
    return "/proc/self/fd/" + std::to_string(folder) + "/" + name;
}

bool isAccessList(std::string_view attribute) {
    return attribute.rfind("system.posix_acl_", 0) == 0;
}

timespec timeOf(const statx_timestamp& time) {
    timespec result{};
    result.tv_sec = static_cast<time_t>(time.tv_sec);
    result.tv_nsec = static_cast<long>(time.tv_nsec);
    return result;
}

void copyOwner(const CopiedEntry& entry) {
    struct stat copy {};
    const struct statx& status = entry.status;
    if (fstatat(entry.to, entry.name.c_str(), &copy, AT_SYMLINK_NOFOLLOW) != 0) {
        refuseCopyByErrno(entry, "looking at its copy");
    }
    const bool hasOwners = copy.st_uid == status.stx_uid && copy.st_gid == status.stx_gid;
    if (!hasOwners &&
        fchownat(entry.to, entry.name.c_str(), status.stx_uid, status.stx_gid, AT_SYMLINK_NOFOLLOW) != 0) {
        refuseCopyByErrno(entry, "giving its copy user " + std::to_string(status.stx_uid) + " and group " +
                                     std::to_string(status.stx_gid) + ", its owners");
    }
}

void copyAttribute(const CopiedEntry& entry, const char* name) {
    const std::string from = pathBelow(entry.from, entry.fromName);
    std::vector<char> value(XATTR_SIZE_MAX);
    const ssize_t size = lgetxattr(from.c_str(), name, value.data(), value.size());
    if (size < 0 || lsetxattr(pathBelow(entry.to, entry.name).c_str(), name, value.data(),
                              static_cast<std::size_t>(size), 0) != 0) {
        refuseCopyByErrno(entry, std::string("copying its extended attribute ") + name);
    }
}

/// Copies those extended attributes that are access lists, or those that are not.
void copyAttributesThat(const CopiedEntry& entry, bool areAccessLists) {
    std::array<char, XATTR_LIST_MAX> names;
    const ssize_t size = llistxattr(pathBelow(entry.from, entry.fromName).c_str(), names.data(), names.size());
    if (size < 0 && errno != ENOTSUP) {
        refuseCopyByErrno(entry, "listing its extended attributes");
    }
    const std::string_view all(names.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
    for (std::size_t start = 0; start < all.size(); start = all.find('\0', start) + 1) {
        const char* const name = all.data() + start;
        // Labels of SELinux are the system's to give.
        if (isAccessList(name) == areAccessLists && std::strcmp(name, "security.selinux") != 0) {
            copyAttribute(entry, name);
        }
    }
}

}  // namespace

void refuseCopy(const CopiedEntry& entry, const std::string& reason) {
    throw Failure(ExitStatus::RootNotMade, "the dry run cannot copy '" + entry.path + "': " + reason);
}

void refuseCopyByErrno(const CopiedEntry& entry, const std::string& what) {
    throw Failure(ExitStatus::RootNotMade,
                  "the dry run cannot copy '" + entry.path + "': " + what + " failed: " + cv::errorText(errno),
                  "Run it as root or as the owner of all that is in the root, or set TMPDIR to a folder\n"
                  "on a disk with enough space that keeps extended attributes.");
}

void readStatus(CopiedEntry& entry) {
    const int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT;
    if (statx(entry.from, entry.fromName.c_str(), flags, STATX_BASIC_STATS, &entry.status) != 0) {
        refuseCopyByErrno(entry, "looking at it");
    }
    if ((entry.status.stx_attributes & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) != 0) {
        refuseCopy(entry, "it is immutable or append-only (lsattr tells), which a copy would not be");
    }
}

void copyAttributes(const CopiedEntry& entry) {
    // A change of owner takes the set-user-ID bit and capabilities away, a mode may forbid to write attributes, and an
    // access list is in part the mode.
    copyOwner(entry);
    copyAttributesThat(entry, false);
    if (!S_ISLNK(entry.status.stx_mode) &&
        fchmodat(entry.to, entry.name.c_str(), entry.status.stx_mode & ~static_cast<unsigned>(S_IFMT), 0) != 0) {
        refuseCopyByErrno(entry, "setting its copy's mode");
    }
    copyAttributesThat(entry, true);
    const std::array<timespec, 2> times{timeOf(entry.status.stx_atime), timeOf(entry.status.stx_mtime)};
    if (utimensat(entry.to, entry.name.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0) {
        refuseCopyByErrno(entry, "setting its copy's times");
    }
}

}  // namespace host
