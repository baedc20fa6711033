#include "installer-host/journal/UndoWork.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <memory>
#include <utility>

#include "platform/Descriptor.h"
#include "platform/Result.h"

namespace host {

namespace {

using What = UndoItem::What;

std::string parentOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

TypedValue hexOrNull(const std::optional<std::string>& bytes) {
    return bytes ? TypedValue(hexText(*bytes)) : TypedValue();
}

/// An entry's extended attributes, reached through a descriptor that only names it.
class Attributes {
public:
    explicit Attributes(int fd) : path_("/proc/self/fd/" + std::to_string(fd)) {}

    /// Unset when there is none of this name. Throws cv::Fault.
    std::optional<std::string> read(const std::string& name) const {
        std::array<char, XATTR_SIZE_MAX> value;
        const ssize_t size = getxattr(path_.c_str(), name.c_str(), value.data(), value.size());
        if (size < 0 && errno != ENODATA && errno != ENOTSUP) {
            cv::failWith(name, errno);
        }
        return size < 0 ? std::nullopt : std::optional(std::string(value.data(), static_cast<std::size_t>(size)));
    }

    /// Throws cv::Fault.
    void write(const std::string& name, const std::optional<std::string>& value) const {
        const int failed = value ? setxattr(path_.c_str(), name.c_str(), value->data(), value->size(), 0)
                                 : removexattr(path_.c_str(), name.c_str());
        if (failed != 0) {
            cv::failWith(name, errno);
        }
        const cv::Descriptor file(open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        if (file.isOpen() && fsync(file.get()) != 0 && errno != EINVAL) {
            cv::failWith(name, errno);
        }
    }

private:
    std::string path_;
};

/// Opens what stands at `path` without following it, only to name it; invalid when nothing stands there. Throws
/// cv::Fault.
cv::Descriptor nameEntry(const RootFolder& root, const std::string& path) {
    const cv::Descriptor folder = root.openFolder(parentOf(path));
    cv::Descriptor entry(folder.isOpen() ? openat(folder.get(), path == "/" ? "." : nameOf(path).c_str(),
                                                  O_PATH | O_NOFOLLOW | O_CLOEXEC)
                                         : -1);
    if (!entry.isOpen() && errno != ENOENT) {
        cv::failWith(path, errno);
    }
    return entry;
}

void undoAttributeOf(UndoWork& work, const AttributeEdit& edit, const UndoItem& item) {
    const cv::Descriptor entry = nameEntry(work.root, edit.path);
    struct stat status {};
    if (!entry.isOpen() || work.gone.count(edit.path) != 0) {
        if (edit.before) {
            work.leave(item, "it is gone");
        }
        return;
    }
    if (fstat(entry.get(), &status) != 0) {
        cv::failWith(edit.path, errno);
    }
    if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
        work.leave(item, "something else stands in its place");
        return;
    }
    const Attributes attributes(entry.get());
    const std::optional<std::string> now = attributes.read(edit.name);
    if (now == edit.before) {
        return;
    }
    if (now != edit.after) {
        work.leave(item, "it was changed since");
        return;
    }
    if (!work.result.dryRun) {
        attributes.write(edit.name, edit.before);
    }
    work.restore(item);
}

/// Whether the folder holds nothing but what is gone.
bool isEmpty(const UndoWork& work, const std::string& path) {
    cv::Descriptor folder = work.root.openFolder(path);
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(folder.isOpen() ? fdopendir(folder.get()) : nullptr, closedir);
    if (entries == nullptr) {
        cv::failWith(path, errno);
    }
    folder.release();
    while (const dirent* entry = readdir(entries.get())) {
        const std::string name = entry->d_name;
        const bool isOther = name != "." && name != ".." && !cv::isTemporaryName(name);
        if (isOther && work.gone.count(pathOf(path, name)) == 0) {
            return false;
        }
    }
    return true;
}

void removeFolder(UndoWork& work, const std::string& path) {
    lockFolderOf(work, path + "/.").removeLeftovers();
    const cv::LockedFolder parent = lockFolderOf(work, path);
    if (unlinkat(parent.descriptor(), nameOf(path).c_str(), AT_REMOVEDIR) != 0) {
        cv::failWith(path, errno);
    }
    cv::flushFolder(parent.descriptor(), parentOf(path));
}

}  // namespace

void UndoWork::restore(UndoItem item) {
    result.restored.push_back(std::move(item));
}

void UndoWork::leave(UndoItem item, const std::string& reason, bool isFault) {
    item.reason = reason;
    item.isFault = isFault;
    result.left.push_back(std::move(item));
}

cv::LockedFolder lockFolderOf(const UndoWork& work, const std::string& path, bool* isMissing) {
    const std::string parent = parentOf(path);
    cv::Descriptor folder = work.root.openFolder(parent);
    if (!folder.isOpen()) {
        if (isMissing != nullptr) {
            *isMissing = errno == ENOENT;
        }
        cv::failWith(parent, errno);
    }
    return {std::move(folder), parent == "/" ? "" : parent, work.endIfInterrupted};
}

std::string nameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

void undoAttribute(UndoWork& work, const AttributeEdit& edit) {
    work.endIfInterrupted();
    const UndoItem item{What::Attribute,        edit.path, edit.name, hexOrNull(edit.after),
                        hexOrNull(edit.before), "",        false};
    try {
        undoAttributeOf(work, edit, item);
    } catch (const cv::Fault& fault) {
        work.leave(item, fault.reason, true);
    }
}

void undoFolder(UndoWork& work, const std::string& path) {
    work.endIfInterrupted();
    const UndoItem item{What::Folder, path, "", "folder", {}, "", false};
    try {
        struct stat status {};
        const cv::Descriptor entry = nameEntry(work.root, path);
        if (!entry.isOpen()) {
            return;
        }
        if (fstat(entry.get(), &status) != 0 || !S_ISDIR(status.st_mode)) {
            work.leave(item, "something else stands in its place");
        } else if (!isEmpty(work, path)) {
            work.leave(item, "it is not empty");
        } else {
            if (!work.result.dryRun) {
                removeFolder(work, path);
            }
            work.gone.insert(path);
            work.restore(item);
        }
    } catch (const cv::Fault& fault) {
        work.leave(item, fault.reason, true);
    }
}

}  // namespace host
