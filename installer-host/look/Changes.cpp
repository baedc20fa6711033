#include "installer-host/look/Changes.h"

#include <set>

namespace host {

namespace {

/// The two maps' keys, each once.
template <typename Map>
std::set<std::string> keysOf(const Map& a, const Map& b) {
    std::set<std::string> keys;
    for (const Map* map : {&a, &b}) {
        for (const auto& item : *map) {
            keys.insert(item.first);
        }
    }
    return keys;
}

template <typename Map>
typename Map::mapped_type valueOr(const Map& map, const std::string& key) {
    const auto found = map.find(key);
    return found == map.end() ? typename Map::mapped_type() : found->second;
}

Change kindOf(const TypedValue& before, const TypedValue& after) {
    if (before == after) {
        return Change::Unchanged;
    }
    return before.is_null() ? Change::Added : after.is_null() ? Change::Removed : Change::Changed;
}

/// Whether the file was replaced or written between the two looks.
bool storedAnew(const PreferenceDomain& before, const PreferenceDomain& after) {
    const struct stat& a = before.status;
    const struct stat& b = after.status;
    return a.st_ino != b.st_ino || a.st_size != b.st_size || a.st_mtim.tv_sec != b.st_mtim.tv_sec ||
           a.st_mtim.tv_nsec != b.st_mtim.tv_nsec;
}

void compareDomain(const std::string& domain, const PreferenceDomain& before, const PreferenceDomain& after, bool all,
                   Changes& changes) {
    const bool isNew = storedAnew(before, after);
    const bool listUnchanged = all || isNew;
    for (const std::string& key : keysOf(before.keys, after.keys)) {
        const TypedValue old = valueOr(before.keys, key);
        const TypedValue now = valueOr(after.keys, key);
        const Change change = kindOf(old, now);
        if (change != Change::Unchanged || listUnchanged) {
            changes.preferences.push_back({domain, key, change, old, now});
        }
    }
    if (!after.problem.empty()) {
        const bool isOlder = !isNew && !before.problem.empty();
        changes.unreadable.push_back(
            {isOlder ? Unreadable::Kind::Older : Unreadable::Kind::Stored, pathOfDomain(domain), after.problem});
    }
}

void compareFiles(const std::set<std::string>& before, const std::set<std::string>& after, Changes& changes) {
    std::set<std::string> all = before;
    all.insert(after.begin(), after.end());
    for (const std::string& path : all) {
        const bool was = before.count(path) != 0;
        if (was != (after.count(path) != 0)) {
            changes.files.push_back({path, was ? Change::Removed : Change::Added});
        }
    }
}

}  // namespace

Changes compare(const Snapshot& before, const Snapshot& after, bool all) {
    Changes changes;
    for (const std::string& domain : keysOf(before.domains, after.domains)) {
        compareDomain(domain, valueOr(before.domains, domain), valueOr(after.domains, domain), all, changes);
    }
    compareFiles(before.otherFiles, after.otherFiles, changes);
    for (std::size_t i = 0; i < after.objects.size(); ++i) {
        const FinderObject& now = after.objects[i];
        changes.finder.push_back({before.objects[i], now});
        if (!now.problem.empty()) {
            changes.unreadable.push_back({Unreadable::Kind::Finder, now.path, now.problem});
        }
    }
    return changes;
}

}  // namespace host
