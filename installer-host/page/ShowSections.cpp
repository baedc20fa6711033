#include "installer-host/page/ShowSections.h"

#include "installer-host/page/ChangeSections.h"
#include "installer-host/page/Pieces.h"
#include "installer-host/report/Text.h"

namespace host::page {

namespace {

Markup domainSection(const Json& domain) {
    Markup content;
    if (!domain.at("problem").is_null()) {
        content = element("p", state(Mood::Attention, "not readable") + " " + foreign(domain.at("problem")));
    } else if (domain.at("keys").empty()) {
        content = element("p.none", "No keys.");
    } else {
        Table table("Keys and values", {"Key", "Value"});
        for (const auto& [key, value] : domain.at("keys").items()) {
            table.add({path(key), typedValue(value)});
        }
        content = table.markup();
    }
    return section(3, path(domain.at("domain")), content);
}

Markup listSection(const char* title, const std::vector<Markup>& items) {
    return items.empty() ? Markup() : section(2, title, list("items", items));
}

Markup problemList(const Json& unreadable) {
    std::vector<Markup> problems;
    for (const Json& one : unreadable) {
        problems.push_back(unreadableText(one));
    }
    return listSection("Problems", problems);
}

Markup flagsSection(const Json& objects) {
    Table flags("Finder flags", {"Object", "Flags"});
    for (const Json& object : objects) {
        flags.add({path(object.at("path")), flagsText(object)});
    }
    return section(2, "Finder flags", flags.markup());
}

}  // namespace

Markup showSections(const Json& document) {
    Markup domains;
    for (const Json& domain : document.at("domains")) {
        domains += domainSection(domain);
    }
    std::vector<Markup> files;
    for (const Json& file : document.at("files")) {
        files.push_back(path(file));
    }
    const Json& objects = document.at("finderFlags");
    return problemList(document.at("unreadable")) +
           section(2, "Preferences", domains.isEmpty() ? element("p.none", "None.") : domains) +
           listSection("Other files among the preferences", files) +
           (objects.empty() ? Markup() : flagsSection(objects));
}

Markup diffSections(const Json& document) {
    const Json& changes = document.at("finderFlags");
    return problemList(document.at("unreadable")) + preferenceSection(document.at("preferences"), 2) +
           (changes.empty() ? Markup() : finderSection(changes, 2));
}

Markup checkSections(const Json& document) {
    Table table("What was looked at", {"Subject", "Result", "Finding"});
    for (const Json& finding : document.at("findings")) {
        const bool isOk = finding.at("ok");
        table.add({finding.at("subject").get<std::string>(),
                   isOk ? state(Mood::Good, "ok") : state(Mood::Bad, "failed"), foreign(finding.at("text"))});
    }
    return section(2, "Findings", table.markup());
}

}  // namespace host::page
