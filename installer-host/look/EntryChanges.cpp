#include "installer-host/look/EntryChanges.h"

#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace host {

namespace {

bool isFolder(const Entry& entry) {
    return S_ISDIR(entry.status.mode);
}

std::string parentOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return path == "/" ? "" : slash == 0 ? "/" : path.substr(0, slash);
}

/// Whether a file that is as long as before may hold something else.
bool mayHoldAnother(const Entry& before, const Entry& after, const Differences& differs, bool isMoved) {
    const Status& a = before.status;
    const Status& b = after.status;
    const bool isExplained = differs.mode || differs.owner || differs.attributes || a.links != b.links || isMoved;
    return !isSameObject(before, after) || a.modified != b.modified || (a.changed != b.changed && !isExplained);
}

void compareContents(const Entry& before, const Entry& after, bool isMoved, Differences& differs) {
    const auto& old = detailsOf(before).propertyList;
    const auto& now = detailsOf(after).propertyList;
    differs.contents = before.status.size != after.status.size || (old && now && *old != *now);
    differs.maybeContents = !differs.contents && !(old && now) && mayHoldAnother(before, after, differs, isMoved);
}

Differences compareEntry(const Entry& before, const Entry& after, bool isMoved) {
    constexpr std::uint32_t PERMISSIONS = 07777;
    const Status& a = before.status;
    const Status& b = after.status;
    Differences differs;
    differs.type = (a.mode & S_IFMT) != (b.mode & S_IFMT);
    if (differs.type) {
        return differs;
    }
    differs.mode = !S_ISLNK(a.mode) && (a.mode & PERMISSIONS) != (b.mode & PERMISSIONS);
    differs.owner = a.owner != b.owner || a.group != b.group;
    differs.attributes = detailsOf(before).attributes != detailsOf(after).attributes;
    differs.target = detailsOf(before).target != detailsOf(after).target;
    differs.device = a.deviceNumber != b.deviceNumber;
    if (S_ISREG(a.mode)) {
        compareContents(before, after, isMoved, differs);
    }
    differs.times = !isUntouched(before, after);
    return differs;
}

/// Tells an object from all others where it can be found again under another name.
using Key = std::tuple<std::uint64_t, std::uint64_t, std::int64_t, std::uint32_t, std::uint32_t>;

Key keyOf(const Entry& entry) {
    const Identity& identity = entry.status.identity;
    return {identity.device, identity.inode, identity.birth->seconds, identity.birth->nanoseconds,
            entry.status.mode & S_IFMT};
}

class Comparison {
public:
    Comparison(const Tree& before, const Tree& after) : before_(before), after_(after) {}

    EntryChanges compare() {
        compareFolder("");
        findMoves();
        findReplaced();
        for (const auto& [path, entry] : vanished_) {
            if (!isBelowUnseen(path)) {
                add({EntryChange::Kind::Removed, path, "", *entry, {}, {}, {}});
            }
        }
        for (const auto& [path, entry] : appeared_) {
            add({EntryChange::Kind::Created, path, "", {}, *entry, {}, {}});
        }
        return finish();
    }

private:
    using Entries = std::map<std::string, const Entry*>;

    static const Folder& folderOf(const Tree& tree, const std::string& path) {
        static const Folder none;
        const auto found = tree.folders.find(path);
        return found == tree.folders.end() ? none : found->second;
    }

    bool noteUnseen(const std::string& path, const std::string& problem) {
        if (!problem.empty()) {
            unseen_.emplace(path.empty() ? "/" : path, problem);
        }
        return !problem.empty();
    }

    /// Compares what both looks found in the folder; it is the same folder in both.
    void compareFolder(const std::string& path) {
        const Folder& old = folderOf(before_, path);
        const Folder& now = folderOf(after_, path);
        if (noteUnseen(path, now.problem) || noteUnseen(path, old.problem)) {
            return;
        }
        auto a = old.entries.begin();
        auto b = now.entries.begin();
        while (a != old.entries.end() || b != now.entries.end()) {
            if (b == now.entries.end() || (a != old.entries.end() && a->name < b->name)) {
                gather(before_, path, *a++, vanished_);
            } else if (a == old.entries.end() || b->name < a->name) {
                gather(after_, path, *b++, appeared_);
            } else {
                compareNamesakes(path, *a++, *b++);
            }
        }
    }

    void compareNamesakes(const std::string& folder, const Entry& old, const Entry& now) {
        if (!old.problem.empty() || !now.problem.empty()) {
            noteUnseen(pathOf(folder, now.name), now.problem.empty() ? old.problem : now.problem);
        }
        if (!old.hasStatus || !now.hasStatus) {
            return;
        }
        if (!isSameObject(old, now)) {
            gather(before_, folder, old, vanished_);
            gather(after_, folder, now, appeared_);
            return;
        }
        if (!isUntouched(old, now)) {
            addChanged(pathOf(folder, now.name), old, now);
        }
        if (isFolder(now)) {
            compareFolder(pathOf(folder, now.name));
        }
    }

    /// Notes an entry of one look, with all that is below it.
    void gather(const Tree& tree, const std::string& folder, const Entry& entry, Entries& entries) {
        std::vector<std::pair<std::string, const Entry*>> pending{{pathOf(folder, entry.name), &entry}};
        while (!pending.empty()) {
            const auto [path, one] = std::move(pending.back());
            pending.pop_back();
            entries.emplace(path, one);
            noteUnseen(path, one->problem);
            if (isFolder(*one)) {
                const Folder& inner = folderOf(tree, path);
                noteUnseen(path, inner.problem);
                for (const Entry& child : inner.entries) {
                    pending.emplace_back(pathOf(path, child.name), &child);
                }
            }
        }
    }

    /// Where a path of the first look is in the second, as far as its folders moved.
    std::string mapped(const std::string& path) const {
        for (std::string folder = parentOf(path); !folder.empty() && folder != "/"; folder = parentOf(folder)) {
            if (const auto moved = moves_.find(folder); moved != moves_.end()) {
                return moved->second + path.substr(folder.size());
            }
        }
        return path;
    }

    /// Pairs what vanished with what appeared and is the same object.
    void findMoves() {
        std::multimap<Key, std::string> places;
        for (const auto& [path, entry] : appeared_) {
            if (entry->hasStatus && entry->status.identity.birth) {
                places.emplace(keyOf(*entry), path);
            }
        }
        const Entries vanished = vanished_;
        for (const auto& [path, entry] : vanished) {
            if (!entry->hasStatus || !entry->status.identity.birth) {
                continue;
            }
            const auto [first, last] = places.equal_range(keyOf(*entry));
            const std::string expected = mapped(path);
            auto place = std::find_if(first, last, [&](const auto& one) { return one.second == expected; });
            place = place == last ? first : place;
            if (place != last) {
                addMove(path, place->second, expected, *entry);
                places.erase(place);
            }
        }
    }

    void addMove(const std::string& from, const std::string& to, const std::string& expected, const Entry& old) {
        const Entry& now = *appeared_.at(to);
        const Differences differs = compareEntry(old, now, true);
        moves_.emplace(from, to);
        vanished_.erase(from);
        appeared_.erase(to);
        touchFolders(from, to);
        if (to != expected) {
            movedOver_.insert(to);
            add({EntryChange::Kind::Moved, to, from, old, now, differs, {}});
        } else if (differs.any()) {
            add({EntryChange::Kind::Changed, to, "", old, now, differs, {}});
        }
    }

    /// Pairs what stands at the place of something else.
    void findReplaced() {
        const Entries vanished = vanished_;
        for (const auto& [path, entry] : vanished) {
            const std::string place = mapped(path);
            if (const auto now = appeared_.find(place); now != appeared_.end()) {
                addChanged(place, *entry, *now->second);
                appeared_.erase(now);
                vanished_.erase(path);
            } else if (movedOver_.count(place) != 0 && place == path) {
                replaced_.emplace(place, entry);
                vanished_.erase(path);
            }
        }
    }

    void addChanged(const std::string& path, const Entry& old, const Entry& now) {
        const Differences differs = compareEntry(old, now, false);
        if (!isSameObject(old, now)) {
            touchFolders(path, path);
        }
        if (differs.any()) {
            add({EntryChange::Kind::Changed, path, "", old, now, differs, {}});
        } else if (differs.times) {
            add({EntryChange::Kind::Times, path, "", old, now, differs, {}});
        }
    }

    /// Whether the entry lay in a folder that is still there and can no longer be read.
    bool isBelowUnseen(const std::string& path) const {
        for (std::string folder = parentOf(path); !folder.empty(); folder = parentOf(folder)) {
            const auto moved = moves_.find(folder);
            if (moved != moves_.end() && !folderOf(after_, moved->second).problem.empty()) {
                return true;
            }
        }
        return false;
    }

    void touchFolders(const std::string& from, const std::string& to) {
        touched_.insert(parentOf(from));
        touched_.insert(parentOf(to));
    }

    void add(EntryChange change) {
        if (change.kind == EntryChange::Kind::Created || change.kind == EntryChange::Kind::Removed) {
            touchFolders(change.path, change.path);
        }
        changes_.push_back(std::move(change));
    }

    EntryChanges finish() {
        EntryChanges result;
        for (EntryChange& change : changes_) {
            const bool isCaused = change.kind == EntryChange::Kind::Times && touched_.count(change.path) != 0;
            if (const auto found = replaced_.find(change.path); found != replaced_.end()) {
                change.replaced = *found->second;
            }
            if (!isCaused) {
                result.changes.push_back(std::move(change));
            }
        }
        std::stable_sort(result.changes.begin(), result.changes.end(),
                         [](const EntryChange& a, const EntryChange& b) { return a.path < b.path; });
        for (const auto& [path, problem] : unseen_) {
            result.unseen.push_back({path, problem});
        }
        return result;
    }

    const Tree& before_;
    const Tree& after_;
    Entries vanished_, appeared_;
    std::map<std::string, std::string> moves_;   // from where, to where
    std::set<std::string> movedOver_;            // where something moved to
    Entries replaced_;                           // what was there
    std::set<std::string> touched_;              // folders in which names changed
    std::map<std::string, std::string> unseen_;  // by path
    std::vector<EntryChange> changes_;
};

}  // namespace

EntryChanges compareEntries(const Tree& before, const Tree& after) {
    return Comparison(before, after).compare();
}

}  // namespace host
