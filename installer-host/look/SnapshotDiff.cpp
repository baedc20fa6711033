#include "installer-host/look/SnapshotDiff.h"

#include <algorithm>
#include <set>

#include "installer-host/look/KeyChanges.h"

namespace host {

namespace {

constexpr const char* PREFERENCES_FOLDER = "/Library/Preferences/";

std::string fileOf(const std::string& domain) {
    return PREFERENCES_FOLDER + domain + ".plist";
}

std::set<std::string> domainsOf(const SnapshotOf& first, const SnapshotOf& second) {
    std::set<std::string> domains;
    for (const SnapshotOf* side : {&first, &second}) {
        for (const auto& domain : side->snapshot.domains) {
            domains.insert(domain.first);
        }
    }
    return domains;
}

/// The domain, empty when there is none; or null when it is not known what it holds.
const PreferenceDomain* knownDomain(const Snapshot& snapshot, const std::string& domain) {
    static const PreferenceDomain NONE;
    for (const auto& folder : snapshot.unreadable) {
        if (fileOf(domain).compare(0, folder.first.size() + 1, folder.first + "/") == 0) {
            return nullptr;
        }
    }
    const auto found = snapshot.domains.find(domain);
    return found == snapshot.domains.end() ? &NONE : found->second.problem.empty() ? &found->second : nullptr;
}

void noteUnreadable(const SnapshotOf& side, std::vector<Unreadable>& unreadable) {
    const auto note = [&](Unreadable::Kind kind, const std::string& path, const std::string& problem) {
        if (!problem.empty()) {
            unreadable.push_back({kind, side.root + path, problem});
        }
    };
    for (const auto& [path, problem] : side.snapshot.unreadable) {
        note(Unreadable::Kind::Unseen, path, problem);
    }
    for (const auto& [domain, content] : side.snapshot.domains) {
        note(Unreadable::Kind::Stored, fileOf(domain), content.problem);
    }
    for (const FinderObject& object : side.snapshot.objects) {
        note(Unreadable::Kind::Finder, object.path, object.problem);
    }
}

}  // namespace

SnapshotDiff compare(const SnapshotOf& first, const SnapshotOf& second) {
    SnapshotDiff diff;
    for (const std::string& domain : domainsOf(first, second)) {
        const PreferenceDomain* const before = knownDomain(first.snapshot, domain);
        const PreferenceDomain* const after = knownDomain(second.snapshot, domain);
        if (before != nullptr && after != nullptr) {
            compareKeys({fileOf(domain), domain}, before->keys, after->keys, false, diff.preferences);
        }
    }
    for (std::size_t i = 0; i < std::min(first.snapshot.objects.size(), second.snapshot.objects.size()); ++i) {
        const FinderChange flags{first.snapshot.objects[i], second.snapshot.objects[i]};
        if (differs(flags) && flags.before.problem.empty() && flags.after.problem.empty()) {
            diff.finder.push_back(flags);
        }
    }
    noteUnreadable(first, diff.unreadable);
    noteUnreadable(second, diff.unreadable);
    return diff;
}

}  // namespace host
