#include "installer-host/look/Changes.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "installer-host/look/EntryDetails.h"
#include "installer-host/look/KeyChanges.h"
#include "platform/FinderAttribute.h"

namespace host {

namespace {

bool isVendorObject(const std::string& path) {
    return std::find(std::begin(FINDER_OBJECTS), std::end(FINDER_OBJECTS), path) != std::end(FINDER_OBJECTS);
}

/// The entry when it is a property list, null otherwise.
const Entry* propertyListIn(const std::optional<Entry>& entry) {
    return entry && isPropertyList(*entry) ? &*entry : nullptr;
}

/// What the entry's attributes tell of its Finder flags; an object that does not exist when there is no entry.
FinderObject finderObjectOf(const std::string& path, const std::optional<Entry>& entry) {
    if (!entry) {
        return {path, false, "", 0};
    }
    const auto& attributes = detailsOf(*entry).attributes;
    const auto found = attributes.find(cv::FINDER_INFO_ATTRIBUTE);
    return finderObject(path, found == attributes.end() ? nullptr : &found->second);
}

/// Compares the keys of all property lists, of those first that changed.
void comparePropertyLists(const Tree& after, const std::vector<EntryChange>& entries, bool all, Changes& changes) {
    std::set<std::string> compared;
    ValueBudget budget;
    for (const EntryChange& change : entries) {
        const bool isMoved = change.kind == EntryChange::Kind::Moved;
        const Entry* before = propertyListIn(isMoved && change.replaced ? change.replaced : change.before);
        const Entry* now = propertyListIn(change.after);
        compared.insert(change.path);
        if ((before != nullptr || now != nullptr) && (!isMoved || change.replaced || change.differs.contents)) {
            compareKeys(change.path, before, now, all, budget, changes);
        }
    }
    for (const auto& [path, folder] : after.folders) {
        for (const Entry& entry : folder.entries) {
            if (entry.details != nullptr && isPropertyList(entry) && compared.count(pathOf(path, entry.name)) == 0) {
                compareKeys(pathOf(path, entry.name), &entry, &entry, all, budget, changes);
            }
        }
    }
    std::stable_sort(changes.preferences.begin(), changes.preferences.end(),
                     [](const KeyChange& a, const KeyChange& b) { return a.path < b.path; });
}

void compareFinderFlags(const Look& before, const Look& after, Changes& changes) {
    for (std::size_t i = 0; i < after.objects.size(); ++i) {
        const FinderObject& now = after.objects[i];
        changes.finder.push_back({before.objects[i], now});
        if (!now.problem.empty()) {
            changes.unreadable.push_back({Unreadable::Kind::Finder, now.path, now.problem});
        }
    }
    for (const EntryChange& change : changes.entries) {
        const FinderChange flags{finderObjectOf(change.path, change.before), finderObjectOf(change.path, change.after)};
        const bool tellsFlags = change.before ? differs(flags) : flags.after.flags != 0;
        if (change.after && tellsFlags && !isVendorObject(change.path)) {
            changes.finder.push_back(flags);
        }
    }
}

}  // namespace

bool differs(const FinderChange& change) {
    const FinderObject& a = change.before;
    const FinderObject& b = change.after;
    return a.exists != b.exists || a.problem != b.problem || a.flags != b.flags;
}

bool Changes::any() const {
    const auto isChange = [](const EntryChange& change) { return change.kind != EntryChange::Kind::Times; };
    return std::any_of(entries.begin(), entries.end(), isChange);
}

Look look(const RootFolder& root, const std::vector<std::string>& scope, const Look* before,
          const std::function<void()>& perFolder) {
    std::vector<FinderObject> objects = readFinderObjects(root);
    return {lookAt(root, scope, before == nullptr ? nullptr : &before->tree, perFolder), std::move(objects)};
}

Changes compare(const Look& before, const Look& after, bool all) {
    Changes changes;
    EntryChanges found = compareEntries(before.tree, after.tree);
    for (const Unseen& unseen : found.unseen) {
        changes.unreadable.push_back({Unreadable::Kind::Unseen, unseen.path, unseen.problem});
    }
    comparePropertyLists(after.tree, found.changes, all, changes);
    for (EntryChange& change : found.changes) {
        if (all || change.kind != EntryChange::Kind::Times) {
            changes.entries.push_back(std::move(change));
        }
    }
    compareFinderFlags(before, after, changes);
    return changes;
}

}  // namespace host
