#include "installer-host/look/Snapshot.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>

namespace host {

namespace {

constexpr const char* PREFERENCES_FOLDER = "/Library/Preferences/";
constexpr std::string_view SUFFIX = ".plist";

class PreferencesWalk {
public:
    PreferencesWalk(const RootFolder& root, Snapshot& snapshot) : root_(root), snapshot_(snapshot) {}

    /// Looks at the folder `relative`, which is empty for the preferences folder itself or ends with a slash.
    void visitFolder(const std::string& relative) {
        cv::Descriptor folder = root_.open(pathOf(relative), O_RDONLY | O_DIRECTORY);
        const std::unique_ptr<DIR, int (*)(DIR*)> entries(folder.isOpen() ? fdopendir(folder.get()) : nullptr,
                                                          closedir);
        if (entries == nullptr) {
            note(relative, errno);
            return;
        }
        folder.release();
        for (errno = 0; const dirent* entry = readdir(entries.get()); errno = 0) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..") {
                visitEntry(relative + name, *entry);
            }
        }
        note(relative, errno);
    }

private:
    static std::string pathOf(const std::string& relative) { return PREFERENCES_FOLDER + relative; }

    /// Notes why a folder could not be read; one that is not there can have nothing in it.
    void note(const std::string& relative, int error) {
        if (error != 0 && (error != ENOENT || !relative.empty())) {
            const std::string path = pathOf(relative);
            snapshot_.unreadable.emplace(path.substr(0, path.size() - 1), cv::errorText(error));
        }
    }

    void visitEntry(const std::string& relative, const dirent& entry) {
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
        return root_.open(pathOf(relative), O_PATH | O_DIRECTORY | O_NOFOLLOW).isOpen();
    }

    PreferenceDomain readDomain(const std::string& relative) {
        const cv::Descriptor file = root_.open(pathOf(relative), O_RDONLY);
        if (file.isOpen()) {
            return readPreferenceDomain(relative, file.get(), budget_);
        }
        PreferenceDomain unreadable;
        unreadable.problem = cv::errorText(errno);
        return unreadable;
    }

    const RootFolder& root_;
    Snapshot& snapshot_;
    ValueBudget budget_;
};

}  // namespace

std::string domainAt(const std::string& path) {
    const std::string_view folder = PREFERENCES_FOLDER;
    const bool isDomain = path.size() > folder.size() + SUFFIX.size() && path.compare(0, folder.size(), folder) == 0 &&
                          path.compare(path.size() - SUFFIX.size(), SUFFIX.size(), SUFFIX) == 0;
    return isDomain ? path.substr(folder.size(), path.size() - folder.size() - SUFFIX.size()) : "";
}

bool Snapshot::isComplete() const {
    const auto isRead = [](const auto& domain) { return domain.second.problem.empty(); };
    const auto isKnown = [](const FinderObject& object) { return object.problem.empty(); };
    return unreadable.empty() && std::all_of(domains.begin(), domains.end(), isRead) &&
           std::all_of(objects.begin(), objects.end(), isKnown);
}

Snapshot takeSnapshot(const RootFolder& root) {
    Snapshot snapshot;
    PreferencesWalk(root, snapshot).visitFolder("");
    snapshot.objects = readFinderObjects(root);
    return snapshot;
}

}  // namespace host
