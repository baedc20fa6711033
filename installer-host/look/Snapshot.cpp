#include "installer-host/look/Snapshot.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/xattr.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>

namespace host {

namespace {

constexpr const char* PREFERENCES_FOLDER = "/Library/Preferences";
constexpr const char* FINDER_INFO_ATTRIBUTE = "user.com.apple.FinderInfo";
constexpr std::size_t FINDER_INFO_SIZE = 32;
constexpr std::size_t FLAGS_OFFSET = 8;

class PreferencesWalk {
public:
    PreferencesWalk(const RootFolder& root, Snapshot& snapshot) : root_(root), snapshot_(snapshot) {}

    /// Looks at the folder `relative`, which is empty for the preferences folder itself or ends with a slash.
    void visitFolder(const std::string& relative) {
        FileDescriptor folder = root_.open(pathOf(relative), O_RDONLY | O_DIRECTORY);
        const std::unique_ptr<DIR, int (*)(DIR*)> entries(folder.valid() ? fdopendir(folder.get()) : nullptr, closedir);
        if (entries == nullptr) {
            return;
        }
        folder.release();
        while (const dirent* entry = readdir(entries.get())) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..") {
                visitEntry(relative + name, *entry);
            }
        }
    }

private:
    static std::string pathOf(const std::string& relative) { return std::string(PREFERENCES_FOLDER) + "/" + relative; }

    void visitEntry(const std::string& relative, const dirent& entry) {
        constexpr std::string_view SUFFIX = ".plist";
        if (isFolder(relative, entry)) {
            visitFolder(relative + "/");
        } else if (relative.size() > SUFFIX.size() &&
                   relative.compare(relative.size() - SUFFIX.size(), SUFFIX.size(), SUFFIX) == 0) {
            snapshot_.domains.emplace(relative.substr(0, relative.size() - SUFFIX.size()), readDomain(relative));
        } else {
            snapshot_.otherFiles.insert(relative);
        }
    }

    bool isFolder(const std::string& relative, const dirent& entry) const {
        if (entry.d_type != DT_UNKNOWN) {
            return entry.d_type == DT_DIR;
        }
        return root_.open(pathOf(relative), O_PATH | O_DIRECTORY | O_NOFOLLOW).valid();
    }

    PreferenceFile readDomain(const std::string& relative) const {
        const FileDescriptor file = root_.open(pathOf(relative), O_RDONLY);
        if (file.valid()) {
            return readPreferenceFile(file.get());
        }
        PreferenceFile unreadable;
        unreadable.problem = std::strerror(errno);
        return unreadable;
    }

    const RootFolder& root_;
    Snapshot& snapshot_;
};

FinderObject lookAt(const RootFolder& root, const std::string& path) {
    FinderObject object;
    object.path = path;
    const FileDescriptor file = root.open(path, O_PATH);
    object.exists = file.valid();
    if (!object.exists) {
        object.problem = errno == ENOENT || errno == ENOTDIR ? "" : std::strerror(errno);
        return object;
    }
    std::array<unsigned char, FINDER_INFO_SIZE + 1> info{};
    // A descriptor that only names the object gives its attributes through /proc alone.
    const std::string self = "/proc/self/fd/" + std::to_string(file.get());
    const ssize_t size = getxattr(self.c_str(), FINDER_INFO_ATTRIBUTE, info.data(), info.size());
    if (size == static_cast<ssize_t>(FINDER_INFO_SIZE)) {
        object.flags = static_cast<std::uint16_t>(info[FLAGS_OFFSET] << 8U | info[FLAGS_OFFSET + 1]);
    } else if (size >= 0 || errno == ERANGE) {
        object.problem = "its Finder information has a size other than 32 bytes";
    } else if (errno != ENODATA) {
        object.problem = std::strerror(errno);
    }
    return object;
}

}  // namespace

Snapshot takeSnapshot(const RootFolder& root) {
    Snapshot snapshot;
    PreferencesWalk(root, snapshot).visitFolder("");
    for (const char* path : FINDER_OBJECTS) {
        snapshot.objects.push_back(lookAt(root, path));
    }
    return snapshot;
}

}  // namespace host
