#include "installer-host/look/KeyChanges.h"

#include <set>
#include <utility>

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

PreferenceDomain domainOf(const std::string& path, const Entry* entry, ValueBudget& budget) {
    const std::string* bytes = bytesOf(entry);
    return bytes == nullptr ? PreferenceDomain() : parsePreferenceDomain(path, *bytes, budget);
}

/// Only what is wrong with the file.
PreferenceDomain withoutKeys(const Entry& entry) {
    PreferenceDomain domain;
    const std::string* bytes = bytesOf(&entry);
    domain.problem = bytes == nullptr ? "" : damageOf(*bytes);
    return domain;
}

/// Notes a file that is there and cannot be read, or is damaged. Damage outside the preferences is no one's business:
/// other programs have other forms for such files.
bool isUnreadable(const std::string& path, const Entry* entry, const PreferenceDomain& domain, bool isOlder,
                  Changes& changes) {
    using Kind = Unreadable::Kind;
    const std::string problem = entry == nullptr ? "" : detailsOf(*entry).propertyListProblem;
    if (!problem.empty()) {
        changes.unreadable.push_back({Kind::Unseen, path, problem});
    } else if (domain.isTooMuch || (!domain.problem.empty() && !domainAt(path).empty())) {
        const Kind kind = isOlder ? Kind::Older : domain.isTooMuch ? Kind::Unseen : Kind::Stored;
        changes.unreadable.push_back({kind, path, domain.problem});
    }
    return !problem.empty() || !domain.problem.empty();
}

/// Why it is not known what a file held before, to end a sentence with; empty when it is, or when it was damaged.
std::string problemBefore(const Entry* entry, const PreferenceDomain& domain) {
    return domain.isTooMuch ? domain.problem : entry == nullptr ? "" : detailsOf(*entry).propertyListProblem;
}

}  // namespace

void compareKeys(const std::string& path, const Entry* before, const Entry* after, bool all, ValueBudget& budget,
                 Changes& changes) {
    const bool isUntouchedFile = before != nullptr && after != nullptr && isUntouched(*before, *after);
    const bool isDomain = !domainAt(path).empty();
    const bool listUnchanged = isDomain && (all || !isUntouchedFile);
    if (isUntouchedFile && !isDomain && detailsOf(*after).propertyListProblem.empty()) {
        return;
    }
    changes.storedAnew = changes.storedAnew || (isDomain && !isUntouchedFile);
    if (isUntouchedFile && !listUnchanged) {
        isUnreadable(path, after, withoutKeys(*after), true, changes);
        return;
    }
    const PreferenceDomain now = domainOf(path, after, budget);
    const PreferenceDomain old = isUntouchedFile ? now : domainOf(path, before, budget);
    if (isUnreadable(path, after, now, isUntouchedFile, changes)) {
        return;
    }
    if (const std::string problem = problemBefore(before, old); !problem.empty()) {
        changes.unreadable.push_back({Unreadable::Kind::Unseen, path, problem});
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
        TypedValue was = valueOr(before, key);
        TypedValue is = valueOr(after, key);
        const Change change = kindOf(was, is);
        if (change != Change::Unchanged || listUnchanged) {
            changes.push_back({place.path, place.domain, key, change, std::move(was), std::move(is)});
        }
    }
}

}  // namespace host
