#include "installer-host/report/Phrases.h"

#include "installer-host/report/Text.h"

namespace host {

namespace {

std::string describeItems(const TypedValue& value) {
    std::string items;
    for (const auto& [key, item] : value["value"].items()) {
        items += items.empty() ? "" : ", ";
        items += value["type"] == "dictionary" ? inQuotes(key) + ": " : "";
        items += describe(item);
    }
    return items;
}

}  // namespace

std::string describe(const TypedValue& value) {
    constexpr std::size_t MOST_HEX_DIGITS = 64;
    const std::string type = value["type"];
    const TypedValue& content = value["value"];
    if (type == "string") {
        return inQuotes(content.get_ref<const std::string&>());
    }
    if (type == "data") {
        const std::string hex = content;
        return "<" + hex.substr(0, MOST_HEX_DIGITS) + (hex.size() > MOST_HEX_DIGITS ? "..." : "") + ">";
    }
    if (type == "array") {
        return "[" + describeItems(value) + "]";
    }
    if (type == "dictionary") {
        return "{" + describeItems(value) + "}";
    }
    return content.is_string() ? content.get<std::string>() : content.dump();
}

std::string unchangedNote(const KeyChange& change) {
    // Written only when a run could not read the install-status file, and never taken away: without a word about its
    // age it reads like a fault of this run.
    return change.key == "InstallStatus" ? "unchanged: from an earlier run" : "unchanged";
}

std::string sentence(const Unreadable& unreadable) {
    const bool isFinder = unreadable.kind == Unreadable::Kind::Finder;
    return (isFinder ? "the Finder flags of " : "") + escaped(unreadable.path) +
           " cannot be read: " + unreadable.problem;
}

}  // namespace host
