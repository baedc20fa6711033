#include "installer-host/page/AnyValue.h"

#include "installer-host/page/Pieces.h"

namespace host::page {

namespace {

bool isTypedValue(const Json& value) {
    return value.is_object() && value.size() == 2 && value.contains("type") && value.contains("value");
}

Markup listItems(const Json& array) {
    std::vector<Markup> items;
    for (const Json& item : array) {
        items.push_back(anyValue(item));
    }
    return list("items", items);
}

}  // namespace

std::string wordsOf(const std::string& name) {
    std::string words;
    for (const char letter : name) {
        const bool isCapital = letter >= 'A' && letter <= 'Z';
        words += isCapital ? std::string(" ") + static_cast<char>(letter - 'A' + 'a') : std::string(1, letter);
    }
    return words;
}

Markup anyValue(const Json& value) {
    if (value.is_null()) {
        return element("span.none", "none");
    }
    if (value.is_boolean()) {
        return value.get<bool>() ? "yes" : "no";
    }
    if (value.is_string()) {
        return path(value.get_ref<const std::string&>());
    }
    if (isTypedValue(value)) {
        return typedValue(value);
    }
    if (value.is_structured() && value.empty()) {
        return element("span.none", "none");
    }
    return value.is_array() ? listItems(value) : value.is_object() ? otherMembers(value, {}) : Markup(value.dump());
}

Markup otherMembers(const Json& object, const std::set<std::string>& known) {
    Facts facts;
    for (const auto& [name, value] : object.items()) {
        if (known.count(name) == 0) {
            facts.emplace_back(wordsOf(name), anyValue(value));
        }
    }
    return facts.empty() ? Markup() : factList(facts);
}

}  // namespace host::page
