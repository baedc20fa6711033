#include <map>

#include "installer-host/page/MatrixSections.h"
#include "installer-host/page/Pieces.h"
#include "installer-host/report/Phrases.h"
#include "installer-host/report/Text.h"

namespace host::page {

namespace {

/// The positions of the cases by their names, PRODUCT/LANGUAGE/STATUS.
using CaseIndex = std::multimap<std::string, std::size_t>;

/// So many keys fit into a cell; the case's report has them all.
constexpr std::size_t MOST_KEYS = 4;

const char* signOf(const std::string& change) {
    return change == "added" ? "+" : change == "removed" ? "\u2212" : "~";
}

/// "+ Lang = "fr"": the last part of the key's name, and what it is now.
Markup keyItem(const Json& change) {
    const std::string kind = change.at("change");
    const std::string key = change.at("key");
    const Json& value = change.at(kind == "removed" ? "before" : "after");
    return element("span.sign " + kind, {{"aria-hidden", "true"}}, signOf(kind)) + " " +
           element("span.hidden", kind + " ") +
           element("bdi", escaped(key.substr(key.rfind('/') + 1)) + " = " + describe(value));
}

/// What a case set, or else what it changed.
Markup outcomeList(const Json& report) {
    std::vector<Markup> items;
    std::size_t count = 0;
    for (const Json& change : report.at("preferences")) {
        if (change.at("change") != "unchanged" && ++count <= MOST_KEYS) {
            items.push_back(keyItem(change));
        }
    }
    if (count > MOST_KEYS) {
        items.push_back("and " + std::to_string(count - MOST_KEYS) + " more");
    }
    if (items.empty()) {
        items.push_back(report.at("changed").get<bool>() ? report.at("summary").get<std::string>() : "nothing changed");
    }
    return list("outcome", items);
}

Markup caseCell(const Json& oneCase, std::size_t index) {
    const std::string name = "Product " + oneCase.at("product").dump() + ", language " + oneCase.at("language").dump() +
                             ", status " + escaped(oneCase.at("status").get<std::string>()) + ": ";
    const Json& report = oneCase.at("report");
    const bool isWhole = report.is_object() && report.contains("preferences");
    return element("a", {{"href", "#" + anchorOf(index)}, {"id", "to-" + anchorOf(index)}},
                   element("span.hidden", name) + caseState(oneCase)) +
           (isWhole ? outcomeList(report) : Markup());
}

/// The cell of the case with this name; more than one when the case was asked for twice.
Markup cellOf(const Json& cases, const CaseIndex& index, const std::string& name) {
    Markup cell;
    const auto [begin, end] = index.equal_range(name);
    for (auto one = begin; one != end; ++one) {
        cell += element("div.case-cell", caseCell(cases[one->second], one->second));
    }
    return cell.isEmpty() ? element("span.none", "not asked for") : cell;
}

Markup gridOf(const Json& document, const CaseIndex& index, const std::string& status) {
    std::vector<std::string> titles{"Product"};
    for (const Json& language : document.at("languages")) {
        titles.push_back("Language " + language.at("language").dump());
    }
    Table table("What each product and language came to", titles);
    for (const Json& product : document.at("products")) {
        const std::string code = product.at("product").dump();
        std::vector<Markup> cells{code};
        for (const Json& language : document.at("languages")) {
            const std::string name = code + "/" + language.at("language").dump() + "/" + status;
            cells.push_back(cellOf(document.at("cases"), index, name));
        }
        table.add(cells);
    }
    constexpr std::size_t FEW = 6;
    return table.markup(document.at("languages").size() <= FEW ? "grid few" : "grid many");
}

}  // namespace

Markup gridSection(const Json& document) {
    CaseIndex index;
    for (const Json& one : document.at("cases")) {
        index.emplace(one.at("name"), index.size());
    }
    Markup grids;
    for (const Json& status : document.at("statuses")) {
        const Markup file = status.at("file").is_null() ? Markup() : element("p.where", path(status.at("file")));
        grids += section(3, "Install status: " + foreign(status.at("status")),
                         file + gridOf(document, index, status.at("status")));
    }
    return section(
        2, "Grid",
        element("p.signs", "Each cell leads to the report of its case. + added, ~ changed, \u2212 removed.") + grids,
        "grid");
}

}  // namespace host::page
