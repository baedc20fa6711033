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

}  // namespace

Markup showSections(const Json& document) {
    Markup domains;
    for (const Json& domain : document.at("domains")) {
        domains += domainSection(domain);
    }
    std::vector<Markup> files, problems;
    for (const Json& file : document.at("files")) {
        files.push_back(path(file));
    }
    for (const Json& one : document.at("unreadable")) {
        problems.push_back(unreadableText(one));
    }
    Table flags("Finder flags", {"Object", "Flags"});
    for (const Json& object : document.at("finderFlags")) {
        flags.add({path(object.at("path")), flagsText(object)});
    }
    return listSection("Problems", problems) +
           section(2, "Preferences", domains.isEmpty() ? element("p.none", "None.") : domains) +
           listSection("Other files among the preferences", files) + section(2, "Finder flags", flags.markup());
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
