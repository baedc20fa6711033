#include "platform/Preferences/PreferenceFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <stdexcept>
#include <utility>

#include "platform/Descriptor.h"
#include "platform/Preferences/LockedFolder.h"
#include "platform/PropertyList/PropertyList.h"
#include "platform/Report.h"

namespace cv {

namespace {

constexpr mode_t FILE_MODE = 0644;
constexpr mode_t FOLDER_MODE = 0755;

/// Gives a new file or folder the owner of the folder it is in, so that a file that root makes for a user is the
/// user's. Only root may do that, and in a user namespace only for the users it knows; the file is as good without.
void adoptOwner(int fd, const struct stat& folder) {
    if (fchown(fd, folder.st_uid, folder.st_gid) != 0) {
        return;
    }
}

Descriptor openFolder(const std::string& path) {
    return Descriptor(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

/// Opens the folder, making it and the folders above it when they are missing.
Descriptor makeFolder(const std::string& path) {
    Descriptor folder = openFolder(path);
    if (folder.isOpen()) {
        return folder;
    }
    if (errno != ENOENT || path.empty()) {
        failWith(path, errno);
    }
    const std::size_t slash = path.rfind('/');
    const Descriptor parent = makeFolder(slash == 0 ? "/" : path.substr(0, slash));
    const bool isNew = mkdirat(parent.get(), path.c_str() + slash + 1, FOLDER_MODE) == 0;
    if (!isNew && errno != EEXIST) {
        failWith(path, errno);
    }
    folder = openFolder(path);
    struct stat status {};
    if (!folder.isOpen() || fstat(parent.get(), &status) != 0) {
        failWith(path, errno);
    }
    if (isNew) {
        adoptOwner(folder.get(), status);
        if (fchmod(folder.get(), FOLDER_MODE) != 0) {
            failWith(path, errno);
        }
        flushFolder(parent.get(), path);
    }
    return folder;
}

/// Reads the open file, or one byte more of it than a property list may have. Returns 0 or the errno value.
int readFile(int fd, off_t expectedSize, std::string& bytes) {
    const auto expected = std::clamp<off_t>(expectedSize, 0, plist::MAX_FILE_SIZE);
    bytes.reserve(static_cast<std::size_t>(expected) + 1);
    return readAll(fd, plist::MAX_FILE_SIZE, bytes);
}

/// One writer's work on one file, under the folder's lock.
class Update {
public:
    explicit Update(const PreferenceLocation& location)
        : location_(location), path_(location.path()), folder_(makeFolder(location.folder), location.folder) {}

    void run(const PreferenceChanges& changes) {
        folder_.removeLeftovers();
        if (const std::optional<std::string> bytes = newContent(changes)) {
            store(*bytes);
        }
    }

private:
    /// What the file is to hold; nothing when there is none and none is needed.
    std::optional<std::string> newContent(const PreferenceChanges& changes) {
        std::optional<plist::Dictionary> old = readOld();
        const bool isNew = !old;
        plist::Value root{old ? std::move(*old) : plist::Dictionary()};
        plist::Dictionary& dictionary = *root.dictionary();
        for (const auto& [key, value] : changes) {
            if (value) {
                dictionary.insert_or_assign(key, *value);
            } else {
                dictionary.erase(key);
            }
        }
        return isNew && dictionary.empty() ? std::nullopt : std::optional(binaryOf(root));
    }

    std::string binaryOf(const plist::Value& root) const {
        try {
            return plist::toBinary(root);
        } catch (const std::logic_error& error) {
            throw Fault{path_, std::string("it cannot be written: ") + error.what()};
        }
    }

    /// The dictionary of the file in place; nothing when there is none, or none that is a preference file.
    std::optional<plist::Dictionary> readOld() {
        const Descriptor file(
            openat(folder_.descriptor(), location_.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (!file.isOpen()) {
            if (errno == ELOOP) {
                foreign_ = "it is a symbolic link";
            } else if (errno != ENOENT) {
                failWith(path_, errno);
            }
            return std::nullopt;
        }
        struct stat status {};
        if (fstat(file.get(), &status) != 0) {
            failWith(path_, errno);
        }
        if (!S_ISREG(status.st_mode)) {
            throw Fault{path_, "it is not a regular file"};
        }
        std::string bytes;
        if (const int error = readFile(file.get(), status.st_size, bytes)) {
            failWith(path_, error);
        }
        return parseOld(bytes);
    }

    std::optional<plist::Dictionary> parseOld(const std::string& bytes) {
        plist::Parsed parsed = plist::parse(bytes);
        if (parsed.verdict == plist::Parsed::Verdict::Unsupported) {
            throw Fault{path_, "it cannot be rewritten without loss: " + parsed.reason};
        }
        plist::Dictionary* const dictionary = parsed.root ? parsed.root->dictionary() : nullptr;
        if (dictionary == nullptr) {
            foreign_ = parsed.root ? "its root is not a dictionary" : parsed.reason;
            return std::nullopt;
        }
        return std::move(*dictionary);
    }

    /// Keeps what is in the file's place, and is not a preference file, under a free name.
    void keepAside() {
        for (unsigned number = 1;; ++number) {
            const std::string name = location_.name + ".corrupt-" + std::to_string(number);
            const std::string line = path_ + ": " + foreign_ + "; kept as " + name;
            if (isKeptAs(name)) {
                report("CFPreferencesSynchronize", line);
                return;
            }
        }
    }

    /// Gives it this name. False when something else has it.
    bool isKeptAs(const std::string& name) {
        const int folder = folder_.descriptor();
        // As a second name, so that it stays in its place until the new file takes that.
        if (linkat(folder, location_.name.c_str(), folder, name.c_str(), 0) == 0) {
            return true;
        }
        if (errno == EEXIST) {
            return isSame(name);  // a writer that was killed came to here
        }
        // Not every file system has second names, and not every file may get one.
        if (renameat2(folder, location_.name.c_str(), folder, name.c_str(), RENAME_NOREPLACE) == 0) {
            return true;
        }
        if (errno != EEXIST) {
            const int error = errno;
            throw Fault{path_, foreign_ + ", and it cannot be kept aside: " + errorText(error)};
        }
        return false;
    }

    /// Whether that is another name of what is in the file's place.
    bool isSame(const std::string& name) const {
        struct stat here {
        }, there{};
        const auto look = [this](const std::string& at, struct stat& status) {
            return fstatat(folder_.descriptor(), at.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
        };
        return look(location_.name, here) && look(name, there) && here.st_dev == there.st_dev &&
               here.st_ino == there.st_ino;
    }

    void store(const std::string& bytes) {
        if (const plist::Parsed again = plist::parse(bytes); !again.root) {
            throw Fault{path_, "what was to be written cannot be read back: " + again.reason};
        }
        folder_.replace(
            location_.name, bytes, [this](int fd) { makePreferenceFile(fd); },
            [this] {
                if (!foreign_.empty()) {
                    keepAside();
                }
            });
    }

    /// Gives the new file the owner and the mode of a preference file.
    void makePreferenceFile(int fd) const {
        struct stat folder {};
        if (fstat(folder_.descriptor(), &folder) != 0) {
            failWith(path_, errno);
        }
        adoptOwner(fd, folder);
        if (fchmod(fd, FILE_MODE) != 0) {
            failWith(path_, errno);
        }
    }

    const PreferenceLocation& location_;
    std::string path_;
    LockedFolder folder_;
    std::string foreign_;  ///< why what is in the file's place is not a preference file; empty when it is, or absent
};

}  // namespace

std::optional<plist::Dictionary> readPreferences(const PreferenceLocation& location) {
    const std::string path = location.path();
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    std::string bytes;
    const bool isOpen = file.isOpen() && fstat(file.get(), &status) == 0;
    const int error = isOpen ? readFile(file.get(), status.st_size, bytes) : errno;
    if (error == ENOMEM) {
        throw std::bad_alloc();
    }
    plist::Parsed parsed = error == 0 ? plist::parse(bytes) : plist::Parsed();
    plist::Dictionary* const dictionary = parsed.root ? parsed.root->dictionary() : nullptr;
    return dictionary != nullptr ? std::optional(std::move(*dictionary)) : std::nullopt;
}

std::optional<Fault> writePreferences(const PreferenceLocation& location, const PreferenceChanges& changes) {
    try {
        Update(location).run(changes);
    } catch (Fault& fault) {
        return std::move(fault);
    }
    return std::nullopt;
}

}  // namespace cv
