#include "installer-host/page/AnyValue.h"
#include "installer-host/page/ChangeSections.h"
#include "installer-host/page/Pieces.h"
#include "installer-host/report/Phrases.h"
#include "installer-host/report/Text.h"

namespace host::page {

namespace {

/// Text with something before it; nothing for null.
Markup textAfter(const char* before, const Json& text) {
    return text.is_null() ? Markup() : before + path(text);
}

Mood moodOf(const std::string& change) {
    return change == "added"     ? Mood::Added
           : change == "changed" ? Mood::Changed
           : change == "removed" ? Mood::Removed
                                 : Mood::Quiet;
}

void addKey(Table& table, const Json& change) {
    const std::string kind = change.at("change");
    const Json& note = change.at("note");
    table.add({path(change.at("key")), state(moodOf(kind), note.is_null() ? kind : note.get<std::string>()),
               typedValue(change.at("before")), typedValue(change.at("after"))},
              kind.c_str());
}

Table keyTable() {
    return {"Keys that a run stored", {"Key", "Change", "Before", "After"}};
}

/// The heading of a property list, and the table of its keys.
Markup fileOf(const Json& change, const Table& keys, int level) {
    const Json& domain = change.at("domain");
    const Markup title = path(domain.is_null() ? change.at("path") : domain);
    const Markup where = domain.is_null() ? Markup() : element("p.where", path(change.at("path")));
    return section(level, title, where + keys.markup());
}

}  // namespace

Markup preferenceSection(const Json& preferences, int level) {
    Markup files;
    for (std::size_t index = 0; index < preferences.size();) {
        const Json& first = preferences[index];
        Table keys = keyTable();
        for (; index < preferences.size() && preferences[index].at("path") == first.at("path"); ++index) {
            addKey(keys, preferences[index]);
        }
        files += fileOf(first, keys, level + 1);
    }
    return section(level, "Preferences", files.isEmpty() ? element("p.none", "No difference.") : files);
}

Markup flagsText(const Json& object) {
    if (!object.at("problem").is_null()) {
        return state(Mood::Attention, "cannot be read: ") + foreign(object.at("problem"));
    }
    if (object.at("flags").is_null()) {
        return element("span.none", object.at("exists").get<bool>() ? "unknown" : "does not exist");
    }
    const auto flags = object.at("flags").get<std::uint16_t>();
    const std::string names = flagNames(flags);
    return element("code", hexNumber(flags, 4)) + (names.empty() ? "" : " (" + names + ")");
}

Markup finderSection(const Json& changes, int level) {
    Table table("Finder flags before and after", {"Object", "Change", "Before", "After"});
    for (const Json& change : changes) {
        const bool isSame = change.at("before") == change.at("after");
        table.add({path(change.at("path")), isSame ? state(Mood::Quiet, "unchanged") : state(Mood::Changed, "changed"),
                   flagsText(change.at("before")), flagsText(change.at("after"))},
                  isSame ? "" : "changed");
    }
    return section(level, "Finder flags", table.markup());
}

Markup unreadableText(const Json& unreadable) {
    return state(Mood::Attention, "not readable") + " " + unreadable.at("what").get<std::string>() + " " +
           path(unreadable.at("path")) + ": " + foreign(unreadable.at("problem")) +
           (unreadable.contains("pathBytes") ? " (bytes of the path: " + foreign(unreadable.at("pathBytes")) + ")"
                                             : Markup());
}

Markup expectationSection(const Json& report, int level) {
    if (!report.contains("expectation") || report.at("expectation").is_null()) {
        return {};
    }
    const Json& expectation = report.at("expectation");
    const bool isMet = expectation.at("met");
    Table differences("Differences from the expected outcome", {"What", "Where", "Expected", "Found", "In words"});
    for (const Json& one : expectation.at("differences")) {
        differences.add({one.at("what").get<std::string>() + textAfter(": ", one.at("key")),
                         textAfter("", one.at("domain")) + textAfter(" ", one.at("path")), anyValue(one.at("expected")),
                         anyValue(one.at("found")), lines(one.at("text"))});
    }
    return section(level, "Expectation",
                   element("p", isMet ? state(Mood::Good, "met") : state(Mood::Bad, "not met")) +
                       (isMet ? Markup() : differences.markup()) + otherMembers(expectation, {"met", "differences"}));
}

}  // namespace host::page
