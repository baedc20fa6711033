#include "installer-host/look/Selection.h"

#include <algorithm>
#include <cstddef>

namespace host {

namespace {

const TypedValue* findIn(const TypedValue& container, const std::string& key);

/// What `key` names below the part that is called by its first letters up to a slash; the longest such part counts.
template <typename PartOf>
const TypedValue* findBelow(const std::string& key, PartOf partOf) {
    for (std::size_t slash = key.rfind('/'); slash != std::string::npos && slash > 0;
         slash = key.rfind('/', slash - 1)) {
        const TypedValue* const part = partOf(key.substr(0, slash));
        const TypedValue* const found = part == nullptr ? nullptr : findIn(*part, key.substr(slash + 1));
        if (found != nullptr) {
            return found;
        }
    }
    return nullptr;
}

/// The item of an array that the digits name.
const TypedValue* itemAt(const TypedValue& items, const std::string& digits) {
    constexpr std::size_t MOST_DIGITS = 9;
    const bool isNumber =
        !digits.empty() && digits.size() <= MOST_DIGITS && digits.find_first_not_of("0123456789") == std::string::npos;
    const std::size_t index = isNumber ? std::stoul(digits) : items.size();
    return index < items.size() ? &items[index] : nullptr;
}

const TypedValue* findIn(const TypedValue& container, const std::string& key) {
    const TypedValue& content = container.at("value");
    const auto part = [&](const std::string& name) -> const TypedValue* {
        if (container.at("type") == "array") {
            return itemAt(content, name);
        }
        const bool isThere = container.at("type") == "dictionary" && content.contains(name);
        return isThere ? &content.at(name) : nullptr;
    };
    const TypedValue* const whole = part(key);
    return whole != nullptr ? whole : findBelow(key, part);
}

/// Whether the folder of preferences at `path` is one that the domain's file lies in.
bool mayHold(const std::string& path, const std::string& domain) {
    const std::string folder = path + "/";
    return ("/Library/Preferences/" + domain).compare(0, folder.size(), folder) == 0;
}

}  // namespace

const TypedValue* findValue(const std::map<std::string, TypedValue>& keys, const std::string& key) {
    const auto part = [&](const std::string& name) -> const TypedValue* {
        const auto found = keys.find(name);
        return found == keys.end() ? nullptr : &found->second;
    };
    const TypedValue* const whole = part(key);
    return whole != nullptr ? whole : findBelow(key, part);
}

Snapshot select(Snapshot snapshot, const Selection& selection) {
    if (selection.domain.empty()) {
        return snapshot;
    }
    Snapshot selected;
    for (const auto& [path, problem] : snapshot.unreadable) {
        if (mayHold(path, selection.domain)) {
            selected.unreadable.emplace(path, problem);
        }
    }
    const auto domain = snapshot.domains.find(selection.domain);
    if (domain == snapshot.domains.end()) {
        return selected;
    }
    PreferenceDomain& kept = selected.domains[selection.domain] = std::move(domain->second);
    if (!selection.key.empty()) {
        const TypedValue* const value = findValue(kept.keys, selection.key);
        kept.keys = value == nullptr ? std::map<std::string, TypedValue>()
                                     : std::map<std::string, TypedValue>{{selection.key, TypedValue(*value)}};
    }
    return selected;
}

}  // namespace host
