#include "installer-host/expect/Facts.h"

#include <cstdint>
#include <optional>
#include <stdexcept>

#include "installer-host/ExitStatus.h"
#include "installer-host/JsonInput.h"
#include "installer-host/report/Text.h"

namespace host {

namespace {

/// How an expectation's file holds the facts of one kind.
struct Section {
    const char* name;
    FactKind kind;
    int depth;  ///< how many names lead from it to a value
};

constexpr Section SECTIONS[] = {
    {"exitStatus", FactKind::ExitStatus, 0},
    {"steps", FactKind::Step, 1},
    {"alerts", FactKind::Alert, 1},
    {"preferences", FactKind::Preference, 2},
    {"finderFlags", FactKind::FinderFlags, 1},
    {"entries", FactKind::Entry, 1},
};

/// The exit status of a run for its own sake.
int ownStatus(int status) {
    const auto is = [=](ExitStatus one) { return status == static_cast<int>(one); };
    return is(ExitStatus::NotAsExpected) || is(ExitStatus::SomethingChanged) ? 0 : status;
}

[[noreturn]] void refuse(const std::string& name, const std::string& what) {
    throw std::invalid_argument(inQuotes(name) + " " + what);
}

/// What a fact is about. Throws for an empty name: no run's document has one, and an expectation's file cannot.
std::string subjectIn(const Json& object, const char* key) {
    auto subject = object.at(key).get<std::string>();
    if (subject.empty()) {
        refuse(key, "is empty");
    }
    return subject;
}

/// "done, resultFlags 0x00000000"
std::string stepText(const Json& step) {
    const Json& flags = step.at("resultFlagsAfter");
    return step.at("outcome").get<std::string>() +
           (flags.is_null() ? ""
                            : ", resultFlags " + hexNumber(wholeNumberIn<std::uint32_t>(step, "resultFlagsAfter"), 8));
}

/// "changed file: contents, mode"
std::string entryText(const Json& entry) {
    const Json& now = entry.at("after").is_null() ? entry.at("before") : entry.at("after");
    std::string text = entry.at("change").get<std::string>() + " " + now.at("type").get<std::string>();
    if (!entry.at("from").is_null()) {
        text += " from " + entry.at("from").get<std::string>();
    }
    const char* separator = ": ";
    for (const Json& what : entry.at("differs")) {
        text += separator + what.get<std::string>();
        separator = ", ";
    }
    return text;
}

/// The value with its type, and nothing else beside it; nothing when it is none.
std::optional<TypedValue> typedIn(const Json& value) {
    try {
        return typedValue(plistValue(TypedValue(value)));
    } catch (const Json::exception&) {
        return std::nullopt;
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
}

void addSteps(const Json& document, Facts& facts) {
    for (const Json& step : document.at("steps")) {
        facts[{FactKind::Step, subjectIn(step, "step"), ""}] = {stepText(step)};
    }
    std::size_t number = 0;
    for (const Json& alert : document.at("alerts")) {
        facts[{FactKind::Alert, std::to_string(++number), ""}] = {alert.at("title").get<std::string>() + ": " +
                                                                  alert.at("text").get<std::string>()};
    }
}

void addPreferences(const Json& document, Facts& facts) {
    for (const Json& key : document.at("preferences")) {
        const Json& after = key.at("after");
        const std::optional<TypedValue> now = after.is_null() ? TypedValue() : typedIn(after);
        if (!now) {
            refuse("after", "is not a value with its type");
        }
        const std::string subject = subjectIn(key, key.at("domain").is_null() ? "path" : "domain");
        facts[{FactKind::Preference, subject, key.at("key")}] = {*now, key.at("change") != "unchanged"};
    }
}

void addObjects(const Json& document, Facts& facts) {
    for (const Json& object : document.at("finderFlags")) {
        const Json& after = object.at("after");
        const bool isKnown = !after.at("flags").is_null();
        facts[{FactKind::FinderFlags, subjectIn(object, "path"), ""}] = {
            isKnown ? TypedValue(wholeNumberIn<std::uint16_t>(after, "flags")) : TypedValue(),
            object.at("before") != after};
    }
    for (const Json& entry : document.at("entries")) {
        if (entry.at("change") != "times") {
            facts[{FactKind::Entry, subjectIn(entry, "path"), ""}] = {entryText(entry)};
        }
    }
}

/// What JSON's own value stands for; null for null, and for what stands for none.
TypedValue ofPlain(const Json& value) {
    const char* type = value.is_string()           ? "string"
                       : value.is_boolean()        ? "boolean"
                       : value.is_number_integer() ? "integer"
                       : value.is_number()         ? "real"
                                                   : nullptr;
    return type == nullptr ? TypedValue() : TypedValue{{"type", type}, {"value", TypedValue(value)}};
}

/// The value as a person writes it, where that tells all.
Json plain(const TypedValue& value) {
    const Json bare = value.is_object() ? Json(value["value"]) : Json();
    return ofPlain(bare) == value ? bare : Json(value);
}

/// The value of a preference that was written in either way.
TypedValue typed(const std::string& name, const Json& value) {
    if (!value.is_structured()) {
        return ofPlain(value);
    }
    if (const std::optional<TypedValue> typed = typedIn(value)) {
        return *typed;
    }
    refuse(name, R"(needs a plain value, or {"type": TYPE, "value": VALUE} with more of these in it)");
}

TypedValue valueOf(FactKind kind, const std::string& name, const Json& value) {
    if (kind == FactKind::Preference) {
        return typed(name, value);
    }
    const bool isStatus = kind == FactKind::ExitStatus, areFlags = kind == FactKind::FinderFlags;
    const bool isRight = isStatus ? isWhole<int>(value) : areFlags ? isWhole<std::uint16_t>(value) : value.is_string();
    if (!isRight && !value.is_null()) {
        refuse(name, isStatus   ? "needs a whole number, or null"
                     : areFlags ? "needs a whole number from 0 to 65535, or null"
                                : "needs a text, or null");
    }
    return TypedValue(value);
}

/// Adds the facts in `value`, which lies `level` names below its section.
void addFacts(const Section& section, int level, const FactName& name, const Json& value, Facts& facts) {
    const std::string label = level == 0 ? section.name : level == 1 ? name.subject : name.key;
    if (level == section.depth) {
        facts[name] = {valueOf(name.kind, label, value)};
        return;
    }
    if (!value.is_object()) {
        refuse(label, "is not an object");
    }
    for (const auto& [member, inner] : value.items()) {
        if (level == 0 && member.empty()) {
            refuse(label, "has a member without a name");
        }
        FactName next = name;
        (level == 0 ? next.subject : next.key) = member;
        addFacts(section, level + 1, next, inner, facts);
    }
}

}  // namespace

Facts factsOf(const Json& runDocument) {
    Facts facts;
    if (runDocument.contains("steps")) {
        addSteps(runDocument, facts);
        addPreferences(runDocument, facts);
        addObjects(runDocument, facts);
    }
    facts[{FactKind::ExitStatus, "", ""}] = {ownStatus(wholeNumberIn<int>(runDocument, "exitStatus"))};
    return facts;
}

Json toJson(const Facts& facts) {
    Json object = Json::object();
    for (const auto& [name, fact] : facts) {
        const Section& section = SECTIONS[static_cast<int>(name.kind)];
        Json* place = &object[section.name];
        place = section.depth > 0 ? &(*place)[name.subject] : place;
        place = section.depth > 1 ? &(*place)[name.key] : place;
        *place = name.kind == FactKind::Preference ? plain(fact.value) : Json(fact.value);
    }
    return object;
}

Facts factsFrom(const Json& object) {
    Facts facts;
    for (const Section& section : SECTIONS) {
        if (object.contains(section.name)) {
            addFacts(section, 0, {section.kind, "", ""}, object[section.name], facts);
        }
    }
    return facts;
}

bool isKindOfFact(const std::string& member) {
    for (const Section& section : SECTIONS) {
        if (member == section.name) {
            return true;
        }
    }
    return false;
}

}  // namespace host
