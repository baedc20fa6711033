#include "installer-host/run/TreeCopy.h"

#include <dirent.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <ctime>
#include <map>
#include <memory>
#include <utility>

#include "installer-host/Message.h"
#include "installer-host/run/CopyAttributes.h"
#include "platform/Descriptor.h"

namespace host {

namespace {

/// Each level takes two descriptors, of which a process has 1024 by default.
constexpr int DEEPEST = 400;
constexpr off_t PIECE = 8 << 20;

using Folder = std::unique_ptr<DIR, int (*)(DIR*)>;

/// Whether reading a link would change its access time where the system keeps that in the usual way, relatime.
bool isAccessTimeDue(const struct statx& status) {
    constexpr std::int64_t DAY = std::int64_t{24} * 60 * 60;
    const auto isAfter = [&](const statx_timestamp& other) {
        return std::pair(status.stx_atime.tv_sec, status.stx_atime.tv_nsec) > std::pair(other.tv_sec, other.tv_nsec);
    };
    return !isAfter(status.stx_mtime) || !isAfter(status.stx_ctime) ||
           status.stx_atime.tv_sec + DAY <= std::time(nullptr);
}

/// What is copied, across all sources.
struct Done {
    std::uintmax_t entries = 0, bytes = 0;
    std::map<std::pair<dev_t, ino_t>, std::string> linked;  ///< files with several names: the first copy's path
};

class TreeCopy {
public:
    TreeCopy(const CopySource& source, int top, const CopyProgress& progress, Done& done)
        : source_(source), top_(top), progress_(progress), done_(done) {}

    void copy() { copyEntry({source_.folder, ".", top_, source_.name, source_.path, source_.name}, 0); }

private:
    void copyEntry(CopiedEntry entry, int depth) {
        readStatus(entry);
        progress_(++done_.entries, done_.bytes);
        const bool isFolder = S_ISDIR(entry.status.stx_mode);
        if (!isFolder && linkToFirst(entry)) {
            return;
        }
        switch (entry.status.stx_mode & S_IFMT) {
            case S_IFDIR:
                copyFolder(entry, depth);
                break;
            case S_IFREG:
                copyFile(entry);
                break;
            case S_IFLNK:
                copyLink(entry);
                break;
            default:
                copySpecial(entry);
                break;
        }
        copyAttributes(entry);
    }

    /// Gives the copy of a file that has several names another one; false for the first of them.
    bool linkToFirst(const CopiedEntry& entry) {
        if (entry.status.stx_nlink == 1) {
            return false;
        }
        const dev_t device = makedev(entry.status.stx_dev_major, entry.status.stx_dev_minor);
        const auto [first, isNew] = done_.linked.try_emplace({device, entry.status.stx_ino}, entry.copied);
        if (!isNew && linkat(top_, first->second.c_str(), entry.to, entry.name.c_str(), 0) != 0) {
            refuseCopyByErrno(entry, "making a hard link");
        }
        return !isNew;
    }

    int readingFlags() const { return O_RDONLY | O_NOFOLLOW | O_CLOEXEC | (source_.isView ? 0 : O_NOATIME); }

    cv::Descriptor openFrom(const CopiedEntry& entry, int flags) const {
        cv::Descriptor from(openat(entry.from, entry.fromName.c_str(), readingFlags() | flags));
        if (!from.isOpen()) {
            refuseCopyByErrno(entry, "reading it");
        }
        return from;
    }

    void copyFolder(const CopiedEntry& entry, int depth) {
        if (depth == DEEPEST) {
            refuseCopy(entry, "it is nested too deep");
        }
        cv::Descriptor from = openFrom(entry, O_DIRECTORY);
        tellMount(entry, depth);
        if (mkdirat(entry.to, entry.name.c_str(), S_IRWXU) != 0) {
            refuseCopyByErrno(entry, "making its copy");
        }
        const cv::Descriptor to(openat(entry.to, entry.name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        const Folder folder(fdopendir(from.get()), closedir);
        if (!to.isOpen() || folder == nullptr) {
            refuseCopyByErrno(entry, "opening its copy");
        }
        const int opened = from.release();
        for (errno = 0; const dirent* found = readdir(folder.get()); errno = 0) {
            const std::string name = found->d_name;
            if (name != "." && name != "..") {
                copyEntry({opened, name, to.get(), name, entry.path + "/" + name, entry.copied + "/" + name},
                          depth + 1);
            }
        }
        if (errno != 0) {
            refuseCopyByErrno(entry, "listing it");
        }
    }

    /// Says that the copy has no other file system in this place. One for reading only would be another thing there.
    static void tellMount(const CopiedEntry& entry, int depth) {
        if ((entry.status.stx_attributes & STATX_ATTR_MOUNT_ROOT) == 0 && depth > 0) {
            return;
        }
        struct statvfs system {};
        if (statvfs(entry.path.c_str(), &system) == 0 && (system.f_flag & ST_RDONLY) != 0) {
            refuseCopy(entry, "it is mounted for reading only, which a copy would not be");
        }
        if (depth > 0) {
            remark(Talk::Usual,
                   "'" + entry.path + "' is another file system; the dry run works on a copy of what is in it");
        }
    }

    void copyFile(const CopiedEntry& entry) {
        const cv::Descriptor from = openFrom(entry, O_NONBLOCK);
        const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        const cv::Descriptor to(openat(entry.to, entry.name.c_str(), flags, S_IRUSR | S_IWUSR));
        if (!to.isOpen()) {
            refuseCopyByErrno(entry, "making its copy");
        }
        if (ioctl(to.get(), FICLONE, from.get()) == 0) {
            done_.bytes += entry.status.stx_size;
            return;
        }
        const auto size = static_cast<off_t>(entry.status.stx_size);
        for (off_t start = 0; start < size;) {
            const off_t data = lseek(from.get(), start, SEEK_DATA);
            if (data < 0 && errno == ENXIO) {
                break;  // only a hole is left
            }
            const off_t hole = data < 0 ? size : lseek(from.get(), data, SEEK_HOLE);
            start = data < 0 ? start : data;
            const off_t end = hole < 0 ? size : std::min(hole, size);
            copyData(entry, from.get(), to.get(), start, end);
            start = end;
        }
        if (ftruncate(to.get(), size) != 0) {
            refuseCopyByErrno(entry, "writing its copy");
        }
    }

    /// Copies the bytes from `position` to `end`, or to where the file ends by now.
    void copyData(const CopiedEntry& entry, int from, int to, off_t position, off_t end) {
        std::vector<char> buffer;
        while (position < end) {
            const auto wanted = static_cast<std::size_t>(std::min(PIECE, end - position));
            off_t in = position;
            off_t out = position;
            ssize_t count = copy_file_range(from, &in, to, &out, wanted, 0);
            if (count < 0 && errno != ENOSPC && errno != EDQUOT && errno != EIO) {
                buffer.resize(wanted);
                count = pread(from, buffer.data(), wanted, position);
                count = count > 0 ? pwrite(to, buffer.data(), static_cast<std::size_t>(count), position) : count;
            }
            if (count < 0) {
                refuseCopyByErrno(entry, "copying its content");
            }
            if (count == 0) {
                return;
            }
            position += count;
            done_.bytes += static_cast<std::uintmax_t>(count);
            progress_(done_.entries, done_.bytes);
        }
    }

    void copyLink(const CopiedEntry& entry) const {
        if (!source_.isView && isAccessTimeDue(entry.status)) {
            refuseCopy(entry, "reading this link would change its access time, since no read-only view can be had");
        }
        std::array<char, PATH_MAX> target;
        const ssize_t size = readlinkat(entry.from, entry.fromName.c_str(), target.data(), target.size());
        if (size < 0) {
            refuseCopyByErrno(entry, "reading the link");
        }
        const std::string text(target.data(), static_cast<std::size_t>(size));
        if (symlinkat(text.c_str(), entry.to, entry.name.c_str()) != 0) {
            refuseCopyByErrno(entry, "making its copy");
        }
    }

    static void copySpecial(const CopiedEntry& entry) {
        const dev_t device = makedev(entry.status.stx_rdev_major, entry.status.stx_rdev_minor);
        const mode_t mode = (entry.status.stx_mode & S_IFMT) | S_IRUSR | S_IWUSR;
        if (mknodat(entry.to, entry.name.c_str(), mode, device) != 0) {
            refuseCopyByErrno(entry, "making its copy");
        }
    }

    const CopySource& source_;
    int top_;
    const CopyProgress& progress_;
    Done& done_;
};

}  // namespace

void copyTrees(const std::vector<CopySource>& sources, int to, const CopyProgress& progress) {
    Done done;
    for (const CopySource& source : sources) {
        TreeCopy(source, to, progress, done).copy();
    }
}

}  // namespace host
