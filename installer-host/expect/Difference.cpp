#include "installer-host/expect/Difference.h"

#include <algorithm>
#include <cstdint>

#include "installer-host/report/Phrases.h"
#include "installer-host/report/Text.h"

namespace host {

namespace {

TypedValue valueIn(const Facts& facts, const FactName& name) {
    const auto fact = facts.find(name);
    return fact == facts.end() ? TypedValue() : fact->second.value;
}

/// What the difference is about, before a colon.
std::string subjectText(const FactName& name) {
    switch (name.kind) {
        case FactKind::ExitStatus:
            return "exit status";
        case FactKind::Step:
            return name.subject + "-install step";
        case FactKind::Alert:
            return "alert " + name.subject;
        case FactKind::Preference:
            return escaped(name.subject) + ": " + inQuotes(name.key);
        case FactKind::FinderFlags:
            return escaped(name.subject) + ": Finder flags";
        case FactKind::Entry:
            break;
    }
    return escaped(name.subject);
}

std::string valueText(FactKind kind, const TypedValue& value) {
    if (value.is_null()) {
        return kind == FactKind::Entry ? "no change" : "nothing";
    }
    if (kind == FactKind::Preference) {
        return describe(value) + " (" + value["type"].get<std::string>() + ")";
    }
    if (kind == FactKind::FinderFlags) {
        const auto flags = value.get<std::uint16_t>();
        return hexNumber(flags, 4) + (flagNames(flags).empty() ? "" : " (" + flagNames(flags) + ")");
    }
    return value.is_string() ? escaped(value.get_ref<const std::string&>()) : value.dump();
}

/// All that there is to a value.
std::string wholeText(const TypedValue& value) {
    return value.dump(-1, ' ', true, TypedValue::error_handler_t::replace);
}

const char* whatOf(const Difference& difference) {
    static constexpr const char* WHAT[] = {"exit status", "step", "alert", "preference", "finder flags", "entry"};
    return difference.isCase ? "case" : WHAT[static_cast<int>(difference.name.kind)];
}

}  // namespace

std::vector<Difference> compare(const Facts& expected, bool complete, const Facts& found) {
    std::vector<Difference> differences;
    for (const auto& [name, fact] : expected) {
        const TypedValue now = valueIn(found, name);
        if (fact.value != now) {
            differences.push_back({name, fact.value, now});
        }
    }
    for (const auto& [name, fact] : found) {
        // Every run has an exit status, whether or not it is of interest.
        if (complete && fact.isChange && name.kind != FactKind::ExitStatus && expected.count(name) == 0) {
            differences.push_back({name, nullptr, fact.value});
        }
    }
    std::stable_sort(differences.begin(), differences.end(),
                     [](const Difference& a, const Difference& b) { return a.name < b.name; });
    return differences;
}

std::string describe(const Difference& difference) {
    const FactName& name = difference.name;
    if (difference.isCase) {
        return "nothing is expected of " + escaped(name.subject);
    }
    if (difference.expected.is_null() && difference.found.is_null()) {
        return subjectText(name) + ": was removed, and nothing is expected of it";
    }
    std::string expected = valueText(name.kind, difference.expected);
    std::string found = valueText(name.kind, difference.found);
    if (expected == found) {  // a real of 32 bits and one of 64, or dates within a second
        expected = wholeText(difference.expected);
        found = wholeText(difference.found);
    }
    return subjectText(name) + ": expected " + expected + ", found " + found;
}

Json toJson(const Difference& difference) {
    const FactName& name = difference.name;
    const bool isPreference = name.kind == FactKind::Preference;
    const bool hasPath = isPreference || name.kind == FactKind::FinderFlags || name.kind == FactKind::Entry;
    const bool isDomain = isPreference && name.subject.front() != '/';
    const std::string path = isDomain ? "/Library/Preferences/" + name.subject + ".plist" : name.subject;
    const std::string& key = isPreference ? name.key : name.subject;
    const bool hasKey = isPreference || difference.isCase || !(hasPath || key.empty());
    return {{"what", whatOf(difference)},
            {"path", hasPath && !difference.isCase ? Json(path) : Json()},
            {"domain", isDomain ? Json(name.subject) : Json()},
            {"key", hasKey ? Json(key) : Json()},
            {"expected", difference.expected},
            {"found", difference.found},
            {"text", describe(difference)}};
}

}  // namespace host
