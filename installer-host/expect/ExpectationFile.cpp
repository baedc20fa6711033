#include "installer-host/expect/ExpectationFile.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>

namespace host {

namespace {

using Cases = std::vector<std::pair<CaseParts, Facts>>;

/// The parts of a name that a fact depends on, a bit for each.
using Dependence = unsigned;

/// From what holds for all cases to what holds for one alone.
constexpr Dependence DEPENDENCES[] = {0, 4, 2, 1, 6, 5, 3, 7};

CaseParts masked(const CaseParts& parts, Dependence dependence) {
    CaseParts result;
    for (unsigned i = 0; i < parts.size(); ++i) {
        result[i] = (dependence >> i & 1U) != 0 ? parts[i] : "*";
    }
    return result;
}

std::optional<TypedValue> valueIn(const Facts& facts, const FactName& name) {
    const auto fact = facts.find(name);
    return fact == facts.end() || !fact->second.isChange ? std::nullopt : std::optional(fact->second.value);
}

/// Whether cases that are alike in these parts are alike in the fact.
bool dependsOnlyOn(const Cases& cases, Dependence dependence, const FactName& name) {
    std::map<CaseParts, std::optional<TypedValue>> values;
    return std::all_of(cases.begin(), cases.end(), [&](const auto& one) {
        const std::optional<TypedValue> value = valueIn(one.second, name);
        return values.insert({masked(one.first, dependence), value}).first->second == value;
    });
}

std::set<FactName> namesIn(const Cases& cases) {
    std::set<FactName> names;
    for (const auto& one : cases) {
        for (const auto& [name, fact] : one.second) {
            if (fact.isChange) {
                names.insert(name);
            }
        }
    }
    return names;
}

/// The facts by pattern: first those of all cases, last those of single ones.
Json factored(const Cases& cases) {
    std::map<Dependence, std::map<CaseParts, Facts>> found;
    for (const FactName& name : namesIn(cases)) {
        const Dependence dependence =
            *std::find_if(std::begin(DEPENDENCES), std::end(DEPENDENCES),
                          [&](Dependence one) { return one == 7 || dependsOnlyOn(cases, one, name); });
        for (const auto& [parts, facts] : cases) {
            if (const auto value = valueIn(facts, name)) {
                found[dependence][masked(parts, dependence)][name] = {*value};
            }
        }
    }
    Json json = Json::object();
    for (const Dependence dependence : DEPENDENCES) {
        for (const auto& one : cases) {
            const CaseParts pattern = masked(one.first, dependence);
            if (const auto facts = found[dependence].find(pattern); facts != found[dependence].end()) {
                json[nameOf(pattern)] = toJson(facts->second);
            }
        }
    }
    return json;
}

Json codesOf(const Cases& cases, std::size_t part) {
    Json codes = Json::array();
    for (const auto& one : cases) {
        const std::string& text = one.first[part];
        const Json code = part < 2 ? Json(std::stoi(text)) : Json(text);
        if (std::find(codes.begin(), codes.end(), code) == codes.end()) {
            codes.push_back(code);
        }
    }
    return codes;
}

/// The cases that there are: one grid, or else each for itself.
Json coversOf(const Cases& cases) {
    const auto gridOf = [](const Cases& some) -> Json {
        return {{"products", codesOf(some, 0)}, {"languages", codesOf(some, 1)}, {"statuses", codesOf(some, 2)}};
    };
    Json grid = gridOf(cases);
    Json covers = Json::array();
    if (grid["products"].size() * grid["languages"].size() * grid["statuses"].size() == cases.size()) {
        covers.push_back(std::move(grid));
        return covers;
    }
    for (const auto& one : cases) {
        covers.push_back(gridOf({one}));
    }
    return covers;
}

std::string dumped(const Json& value) {
    return value.dump(-1, ' ', true, Json::error_handler_t::replace);
}

bool isTypedValue(const Json& value) {
    return value.is_object() && value.size() <= 3 && value.contains("type") && value.contains("value");
}

/// Whether it fits on one line: a value, a list of values, or an object with no more than one such member.
bool isOneLine(const Json& value) {
    if (value.is_array()) {
        return std::all_of(value.begin(), value.end(), [](const Json& one) { return one.is_primitive(); });
    }
    return value.is_primitive() || (value.size() == 1 && isOneLine(value.front())) || isTypedValue(value);
}

void write(const Json& value, const std::string& indent, std::string& text) {
    const bool isBlock = !isOneLine(value);
    const bool isObject = value.is_object();
    if (!value.is_structured() || isTypedValue(value)) {
        text += dumped(value);
        return;
    }
    const std::string inner = isBlock ? "\n" + indent + "  " : "";
    text += isObject ? "{" : "[";
    const char* separator = "";
    for (const auto& [name, member] : value.items()) {
        text += separator + inner + (isObject ? dumped(name) + ": " : "");
        write(member, indent + "  ", text);
        separator = isBlock ? "," : ", ";
    }
    text += (isBlock ? "\n" + indent : "") + (isObject ? "}" : "]");
}

std::string textOf(const Json& facts) {
    Json json{{"expectation", "1.0"}, {"complete", true}};
    json.update(facts);
    std::string text;
    write(json, "", text);
    return text + "\n";
}

}  // namespace

std::string expectationFileText(const Facts& facts) {
    Facts changes;
    std::copy_if(facts.begin(), facts.end(), std::inserter(changes, changes.end()),
                 [](const auto& fact) { return fact.second.isChange; });
    return textOf(toJson(changes));
}

std::string expectationFileText(const std::vector<std::pair<CaseParts, Facts>>& cases) {
    return textOf({{"covers", coversOf(cases)}, {"cases", factored(cases)}});
}

}  // namespace host
