#include "installer-host/journal/Inventory.h"

#include <sys/stat.h>

#include <set>
#include <utility>

#include "installer-host/look/EntryDetails.h"
#include "installer-host/look/PreferenceDomain.h"

namespace host {

namespace {

bool isFolder(const Entry& entry) {
    return S_ISDIR(entry.status.mode);
}

/// The entry when it is a property list, unset otherwise.
std::optional<Entry> listIn(const std::optional<Entry>& entry) {
    return entry && isPropertyList(*entry) ? entry : std::nullopt;
}

PreferenceDomain domainOf(const std::string& path, const std::optional<Entry>& list, ValueBudget& budget) {
    const auto& bytes = list ? detailsOf(*list).propertyList : std::nullopt;
    return bytes ? parsePreferenceDomain(path, *bytes, budget) : PreferenceDomain();
}

template <typename Value>
std::set<std::string> namesIn(const std::map<std::string, Value>& a, const std::map<std::string, Value>& b) {
    std::set<std::string> names;
    for (const auto* side : {&a, &b}) {
        for (const auto& item : *side) {
            names.insert(item.first);
        }
    }
    return names;
}

template <typename Value, typename None>
auto valueIn(const std::map<std::string, Value>& values, const std::string& name, None none) {
    const auto found = values.find(name);
    return found == values.end() ? none : None(found->second);
}

bool isAlike(const Entry& a, const Entry& b) {
    return a.status.mode == b.status.mode && a.status.owner == b.status.owner && a.status.group == b.status.group &&
           detailsOf(a).propertyList == detailsOf(b).propertyList;
}

class Comparison {
public:
    Comparison(const Inventory& before, const Inventory& after) : before_(before), after_(after) {}

    Edits run() {
        for (const std::string& path : namesIn(before_.entries, after_.entries)) {
            if (!isUnseen(before_, path) && !isUnseen(after_, path)) {
                compare(path);
            }
        }
        return std::move(edits_);
    }

private:
    /// Whether the entry, or a folder that it is in, could not be looked at.
    static bool isUnseen(const Inventory& inventory, const std::string& path) {
        for (std::string part = path; !inventory.unseen.empty(); part.resize(part.rfind('/'))) {
            if (inventory.unseen.count(part.empty() ? "/" : part) != 0) {
                return true;
            }
            if (part.empty() || part == "/") {
                return false;
            }
        }
        return false;
    }

    void compare(const std::string& path) {
        const auto before = valueIn(before_.entries, path, std::optional<Entry>());
        const auto after = valueIn(after_.entries, path, std::optional<Entry>());
        compareLists(path, listIn(before), listIn(after));
        compareAttributes(path, before, after);
        if (after && isFolder(*after) && !(before && isFolder(*before))) {
            edits_.foldersMade.push_back(path);
        }
    }

    void compareLists(const std::string& path, const std::optional<Entry>& before, const std::optional<Entry>& after) {
        if ((!before && !after) || (before && after && isAlike(*before, *after))) {
            return;
        }
        FileEdit edit{path, before, after, {}};
        const PreferenceDomain old = domainOf(path, before, budget_);
        const PreferenceDomain now = domainOf(path, after, budget_);
        if (old.isTooMuch || now.isTooMuch) {
            edits_.notHeld.push_back({path, "contents"});
            return;
        }
        for (const std::string& key : namesIn(old.keys, now.keys)) {
            KeyEdit one{key, valueIn(old.keys, key, TypedValue()), valueIn(now.keys, key, TypedValue())};
            if (one.before != one.after) {
                edit.keys.push_back(std::move(one));
            }
        }
        edits_.files.push_back(std::move(edit));
    }

    void compareAttributes(const std::string& path, const std::optional<Entry>& before,
                           const std::optional<Entry>& after) {
        using Attributes = std::map<std::string, std::string>;
        const Attributes old = before ? userAttributes(*before) : Attributes();
        const Attributes now = after ? userAttributes(*after) : Attributes();
        for (const std::string& name : namesIn(old, now)) {
            AttributeEdit edit{path, name, valueIn(old, name, std::optional<std::string>()),
                               valueIn(now, name, std::optional<std::string>())};
            if (edit.before != edit.after) {
                edits_.attributes.push_back(std::move(edit));
            }
        }
    }

    const Inventory& before_;
    const Inventory& after_;
    ValueBudget budget_;
    Edits edits_;
};

}  // namespace

bool isUserAttribute(const std::string& name) {
    return name.rfind("user.", 0) == 0;
}

std::map<std::string, std::string> userAttributes(const Entry& entry) {
    std::map<std::string, std::string> attributes;
    for (const auto& [name, value] : detailsOf(entry).attributes) {
        if (isUserAttribute(name)) {
            attributes.emplace(name, value);
        }
    }
    return attributes;
}

Inventory inventoryOf(const Tree& tree) {
    Inventory inventory;
    for (const auto& [folder, content] : tree.folders) {
        if (!content.problem.empty()) {
            inventory.unseen.emplace(folder.empty() ? "/" : folder, content.problem);
        }
        for (const Entry& entry : content.entries) {
            const std::string path = pathOf(folder, entry.name);
            const std::string& listProblem = detailsOf(entry).propertyListProblem;
            if (!entry.problem.empty() || !listProblem.empty()) {
                inventory.unseen.emplace(path, entry.problem.empty() ? listProblem : entry.problem);
            } else if (isFolder(entry) || isPropertyList(entry) || !userAttributes(entry).empty()) {
                inventory.entries.emplace(path, entry);
            }
        }
    }
    return inventory;
}

Edits editsBetween(const Inventory& before, const Inventory& after) {
    return Comparison(before, after).run();
}

}  // namespace host
