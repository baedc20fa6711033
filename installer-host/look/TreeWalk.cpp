#include "installer-host/look/TreeWalk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <memory>
#include <string_view>
#include <tuple>
#include <utility>

#include "installer-host/look/EntryDetails.h"

namespace host {

namespace {

/// Lets the process work in other folders and brings it back at the end of the scope. Names in the working folder are
/// the one way to attributes that neither follows a link nor walks the path from the root again.
class WorkingFolder {
public:
    WorkingFolder() : before_(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {}
    ~WorkingFolder() {
        // A folder that was removed, or may no longer be entered, was of no use to anyone.
        if ((!before_.isOpen() || fchdir(before_.get()) != 0) && chdir("/") != 0) {
            return;
        }
    }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

private:
    cv::Descriptor before_;
};

DiskTime timeOf(const statx_timestamp& time) {
    return {time.tv_sec, time.tv_nsec};
}

std::uint64_t deviceOf(std::uint32_t major, std::uint32_t minor) {
    return std::uint64_t{major} << 32U | minor;
}

Status statusOf(const struct statx& found) {
    Status status;
    status.mode = found.stx_mode;
    status.owner = found.stx_uid;
    status.group = found.stx_gid;
    status.links = found.stx_nlink;
    status.size = found.stx_size;
    status.deviceNumber = deviceOf(found.stx_rdev_major, found.stx_rdev_minor);
    status.modified = timeOf(found.stx_mtime);
    status.changed = timeOf(found.stx_ctime);
    status.identity = {deviceOf(found.stx_dev_major, found.stx_dev_minor), found.stx_ino, {}};
    if ((found.stx_mask & STATX_BTIME) != 0) {
        status.identity.birth = timeOf(found.stx_btime);
    }
    return status;
}

/// The names in a folder, sorted, but for "." and "..".
std::vector<std::string> readNames(DIR* entries, std::string& problem) {
    std::vector<std::string> names;
    errno = 0;
    while (const dirent* entry = readdir(entries)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
        errno = 0;
    }
    problem = errno == 0 ? "" : cv::errorText(errno);
    std::sort(names.begin(), names.end());
    return names;
}

/// The entries of a folder as they were, asked for by name in ascending order.
class FormerEntries {
public:
    FormerEntries(const Tree* tree, const std::string& path) {
        if (tree != nullptr) {
            const auto found = tree->folders.find(path);
            entries_ = found == tree->folders.end() ? nullptr : &found->second.entries;
        }
    }

    /// Null when there was none.
    const Entry* find(const std::string& name) {
        while (entries_ != nullptr && next_ < entries_->size() && (*entries_)[next_].name < name) {
            ++next_;
        }
        const bool isThere = entries_ != nullptr && next_ < entries_->size() && (*entries_)[next_].name == name;
        return isThere ? &(*entries_)[next_] : nullptr;
    }

private:
    const std::vector<Entry>* entries_ = nullptr;
    std::size_t next_ = 0;
};

/// The time by a clock of the system. CLOCK_REALTIME_COARSE is the one that changes of files are dated by; it goes in
/// steps of 1 to 10 ms.
DiskTime timeOf(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return {now.tv_sec, static_cast<std::uint32_t>(now.tv_nsec)};
}

class TreeWalk {
public:
    TreeWalk(const RootFolder& root, const Tree* before) : root_(root), before_(before) {}

    Tree look(const std::vector<std::string>& scope, const std::function<void()>& perFolder) {
        const WorkingFolder back;
        lookAtScope(scope);
        while (!pending_.empty()) {
            perFolder();
            const std::string path = std::move(pending_.back());
            pending_.pop_back();
            lookAtFolder(path);
        }
        return std::move(tree_);
    }

    /// Waits until a change of anything that was looked at has a later time than it has now.
    void waitForTheClock() const {
        constexpr timespec MILLISECOND{0, 1'000'000};
        // Some file systems keep whole seconds, or every other one.
        const std::int64_t step = latest_.nanoseconds == 0 ? 2 : 0;
        while (!isBefore({latest_.seconds + step, latest_.nanoseconds}, timeOf(CLOCK_REALTIME_COARSE))) {
            nanosleep(&MILLISECOND, nullptr);
        }
    }

private:
    /// The folder that is being looked at.
    struct Place {
        std::string path;
        Folder& folder;
        FormerEntries former;
    };

    Place placeFor(const std::string& path) { return {path, tree_.folders[path], FormerEntries(before_, path)}; }

    void lookAtScope(const std::vector<std::string>& scope) {
        std::vector<std::string> paths = scope;
        std::sort(paths.begin(), paths.end());
        paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
        Place place = placeFor("");
        for (const std::string& path : paths) {
            const std::size_t slash = path.rfind('/');
            const cv::Descriptor parent = root_.openFolder(slash == 0 ? "/" : path.substr(0, slash));
            const std::string name = path.substr(slash + 1);
            if (parent.isOpen() && fchdir(parent.get()) == 0) {
                lookAtEntry(place, name.empty() ? "." : name, path);
            } else if (errno != ENOENT && errno != ENOTDIR) {
                Entry unseen;
                unseen.name = path;
                unseen.problem = cv::errorText(errno);
                place.folder.entries.push_back(std::move(unseen));
            }
        }
    }

    void lookAtFolder(const std::string& path) {
        Place place = placeFor(path);
        cv::Descriptor file = root_.openFolder(path);
        const std::unique_ptr<DIR, int (*)(DIR*)> entries(file.isOpen() ? fdopendir(file.get()) : nullptr, closedir);
        if (entries == nullptr) {
            place.folder.problem = cv::errorText(errno);
            return;
        }
        file.release();
        const std::vector<std::string> names = readNames(entries.get(), place.folder.problem);
        if (!names.empty() && fchdir(dirfd(entries.get())) != 0) {
            place.folder.problem = cv::errorText(errno);
            return;
        }
        place.folder.entries.reserve(names.size());
        for (const std::string& name : names) {
            lookAtEntry(place, name, name);
        }
    }

    /// Looks at the entry `name` of the working folder, which gets `shownName` in the tree.
    void lookAtEntry(Place& place, const std::string& name, const std::string& shownName) {
        struct statx found {};
        Entry entry;
        entry.hasStatus = statx(AT_FDCWD, name.c_str(), AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT,
                                STATX_BASIC_STATS | STATX_BTIME, &found) == 0;
        if (!entry.hasStatus && errno == ENOENT) {
            return;
        }
        entry.problem = entry.hasStatus ? "" : cv::errorText(errno);
        entry.name = shownName;
        if (entry.hasStatus) {
            entry.status = statusOf(found);
            noteTime(entry.status.changed);
            addDetails(entry, name, place.former.find(shownName));
        }
        if (S_ISDIR(entry.status.mode)) {
            pending_.push_back(pathOf(place.path, shownName));
        }
        place.folder.entries.push_back(std::move(entry));
    }

    /// A time that is still to come is no measure: the clock was put back since.
    void noteTime(DiskTime changed) {
        if (isBefore(latest_, changed) && isBefore(changed, tooLate_)) {
            latest_ = changed;
        }
    }

    static bool isBefore(DiskTime a, DiskTime b) {
        return std::tie(a.seconds, a.nanoseconds) < std::tie(b.seconds, b.nanoseconds);
    }

    void addDetails(Entry& entry, const std::string& name, const Entry* former) {
        if (former != nullptr && isUntouched(*former, entry)) {
            entry.details = former->details;
            entry.problem = former->problem;
        } else {
            reader_.complete(entry, name);
        }
    }

    const RootFolder& root_;
    const Tree* before_;
    Tree tree_;
    std::vector<std::string> pending_;
    DetailsReader reader_;
    DiskTime latest_;
    DiskTime tooLate_{timeOf(CLOCK_REALTIME).seconds + 2, 0};
};

}  // namespace

Tree lookAt(const RootFolder& root, const std::vector<std::string>& scope, const Tree* before,
            const std::function<void()>& perFolder) {
    TreeWalk walk(root, before);
    Tree tree = walk.look(scope, perFolder);
    if (before == nullptr) {
        walk.waitForTheClock();
    }
    return tree;
}

}  // namespace host
