#include "installer-host/look/KeyChanges.h"

#include <set>

#include "installer-host/look/Snapshot.h"

namespace host {

namespace {

TypedValue valueOr(const Keys& keys, const std::string& key) {
    const auto found = keys.find(key);
    return found == keys.end() ? TypedValue() : found->second;
}

Change kindOf(const TypedValue& before, const TypedValue& after) {
    if (before == after) {
        return Change::Unchanged;
    }
    return before.is_null() ? Change::Added : after.is_null() ? Change::Removed : Change::Changed;
}

const std::string* bytesOf(const Entry* entry) {
    const bool isKnown = entry != nullptr && detailsOf(*entry).propertyList;
    return isKnown ? &*detailsOf(*entry).propertyList : nullptr;
}

PreferenceDomain domainOf(const Entry* entry) {
    const std::string* bytes = bytesOf(entry);
    return bytes == nullptr ? PreferenceDomain() : parsePreferenceDomain(*bytes);
}

/// Notes a file that is there and cannot be read, or is damaged. Damage outside the preferences is no one's business:
/// other programs have other forms for such files.
bool isUnreadable(const std::string& path, const Entry* entry, const PreferenceDomain& domain, bool isOlder,
                  Changes& changes) {
    const std::string problem = entry == nullptr ? "" : detailsOf(*entry).propertyListProblem;
    if (!problem.empty()) {
        changes.unreadable.push_back({Unreadable::Kind::Unseen, path, problem});
    } else if (!domain.problem.empty() && !domainAt(path).empty()) {
        changes.unreadable.push_back(
            {isOlder ? Unreadable::Kind::Older : Unreadable::Kind::Stored, path, domain.problem});
    }
    return !problem.empty() || !domain.problem.empty();
}

}  // namespace

void compareKeys(const std::string& path, const Entry* before, const Entry* after, bool all, Changes& changes) {
    const bool isUntouchedFile = before != nullptr && after != nullptr && isUntouched(*before, *after);
    const bool isDomain = !domainAt(path).empty();
    const bool listUnchanged = isDomain && (all || !isUntouchedFile);
    if (isUntouchedFile && !isDomain && detailsOf(*after).propertyListProblem.empty()) {
        return;
    }
    changes.storedAnew = changes.storedAnew || (isDomain && !isUntouchedFile);
    const PreferenceDomain now = domainOf(after);
    const PreferenceDomain old = isUntouchedFile ? now : domainOf(before);
    if (isUnreadable(path, after, now, isUntouchedFile, changes)) {
        return;
    }
    if (before != nullptr && (!detailsOf(*before).propertyListProblem.empty())) {
        changes.unreadable.push_back({Unreadable::Kind::Unseen, path, detailsOf(*before).propertyListProblem});
        return;
    }
    compareKeys({path, domainAt(path)}, old.keys, now.keys, listUnchanged, changes.preferences);
}

void compareKeys(const KeyPlace& place, const Keys& before, const Keys& after, bool listUnchanged,
                 std::vector<KeyChange>& changes) {
    std::set<std::string> keys;
    for (const Keys* side : {&before, &after}) {
        for (const auto& item : *side) {
            keys.insert(item.first);
        }
    }
    for (const std::string& key : keys) {
        const TypedValue was = valueOr(before, key);
        const TypedValue is = valueOr(after, key);
        const Change change = kindOf(was, is);
        if (change != Change::Unchanged || listUnchanged) {
            changes.push_back({place.path, place.domain, key, change, was, is});
        }
    }
}

}  // namespace host
