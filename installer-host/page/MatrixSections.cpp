#include "installer-host/page/MatrixSections.h"

#include "installer-host/page/AnyValue.h"
#include "installer-host/page/Pieces.h"
#include "installer-host/page/RunSections.h"

namespace host::page {

namespace {

/// Why a case failed: what differs from the expected outcome, or else what went wrong.
Markup reasonsOf(const Json& report) {
    std::vector<Markup> reasons;
    if (report.contains("expectation") && !report.at("expectation").is_null()) {
        for (const Json& difference : report.at("expectation").at("differences")) {
            reasons.push_back(lines(difference.at("text")));
        }
    }
    if (reasons.empty() && !report.at("error").is_null()) {
        reasons.push_back(lines(report.at("error").at("what")));
    }
    return list("reasons", reasons);
}

Markup failureSection(const Json& document) {
    std::vector<Markup> failures;
    const Json& cases = document.at("cases");
    for (std::size_t index = 0; index < cases.size(); ++index) {
        const Json& one = cases[index];
        if (one.at("outcome") == "failed") {
            failures.push_back(element("a", {{"href", "#" + anchorOf(index)}}, path(one.at("name"))) + " " +
                               caseState(one) + reasonsOf(one.at("report")));
        }
    }
    const Json& expectation = document.at("expectation");
    if (!expectation.is_null()) {
        for (const Json& name : expectation.at("unused")) {
            failures.push_back(path(name) + " " + state(Mood::Bad, "expected, but not run"));
        }
    }
    return failures.empty() ? Markup() : section(2, "What failed", list("failures", failures), "failures");
}

Markup totalsTable(const char* caption, const char* title, const char* member, const Json& rows) {
    Table table(caption, {title, "Cases", "Passed", "Failed", "Not run", "Changed"});
    for (const Json& row : rows) {
        std::vector<Markup> cells{anyValue(row.at(member))};
        for (const char* count : {"cases", "passed", "failed", "notRun", "changed"}) {
            cells.push_back(row.at(count).dump());
        }
        table.add(cells, row.at("failed") == 0 ? "" : "with-failures");
    }
    return table.markup("totals");
}

Markup totalsSection(const Json& document) {
    return section(2, "Totals",
                   totalsTable("By product", "Product", "product", document.at("products")) +
                       totalsTable("By language", "Language", "language", document.at("languages")) +
                       totalsTable("By install status", "Status", "status", document.at("statuses")),
                   "totals");
}

/// What a case's run reports, or what there is of it.
Markup caseReport(const Json& report) {
    if (!report.is_object()) {
        return element("p.none", "This case was not run.");
    }
    if (!report.contains("steps")) {
        return errorNote(report);
    }
    return errorNote(report) + element("p.lead", report.at("summary").get<std::string>() + ".") +
           countList(report.at("counts")) + runSections(report, 4) + section(4, "How it was run", runFacts(report));
}

Markup messagesOf(const Json& oneCase) {
    const std::string messages = oneCase.at("messages");
    return messages.empty() ? Markup()
                            : element("div.messages", element("p", "Said on standard error:") + lines(messages));
}

Markup caseItem(const Json& oneCase, std::size_t index, bool isOpen) {
    const Markup title = element("h3", path(oneCase.at("name")));
    const Json& status = oneCase.at("exitStatus");
    const Markup exit = status.is_null() ? Markup() : element("span.status", " exit status " + status.dump() + ",");
    const Markup time = element("span.time", " " + oneCase.at("milliseconds").dump() + " ms");
    const Markup back = element("p.back", element("a", {{"href", "#to-" + anchorOf(index)}}, "Back to the grid"));
    const Markup body = element("div.case-body", {{"id", anchorOf(index)}, {"tabindex", "-1"}},
                                messagesOf(oneCase) + caseReport(oneCase.at("report")) + back);
    return disclosure(title + " " + caseState(oneCase) + exit + time, body, isOpen);
}

Markup caseSection(const Json& document) {
    constexpr int MOST_OPEN = 10;
    const bool isOpen = document.at("counts").at("failed") <= MOST_OPEN;
    const Json& cases = document.at("cases");
    std::vector<Markup> items;
    for (std::size_t index = 0; index < cases.size(); ++index) {
        items.push_back(caseItem(cases[index], index, isOpen && cases[index].at("outcome") == "failed"));
    }
    return section(2, "Cases", list("cases", items), "cases");
}

/// Links to the sections, of which that of the failures may be missing.
Markup contentsList(bool hasFailures) {
    std::vector<Markup> links;
    for (const auto& [anchor, title] : std::vector<std::pair<std::string, const char*>>{
             {"grid", "Grid"}, {"failures", "What failed"}, {"totals", "Totals"}, {"cases", "Cases"}}) {
        if (hasFailures || anchor != "failures") {
            links.push_back(element("a", {{"href", "#" + anchor}}, title));
        }
    }
    return element("nav", {{"aria-label", "On this page"}}, list("contents", links));
}

}  // namespace

std::string anchorOf(std::size_t caseIndex) {
    return "case-" + std::to_string(caseIndex + 1);
}

Markup caseState(const Json& oneCase) {
    const std::string outcome = oneCase.at("outcome");
    const Mood mood = outcome == "passed" ? Mood::Good : outcome == "failed" ? Mood::Bad : Mood::Quiet;
    const Json& report = oneCase.at("report");
    Markup marks = state(mood, outcome);
    if (oneCase.at("slow").get<bool>()) {
        marks += " " + state(Mood::Attention, "slow");
    }
    if (report.is_object() && report.contains("alerts") && !report.at("alerts").empty()) {
        marks += " " + state(Mood::Attention, "alert");
    }
    if (report.is_object() && report.contains("leftProcesses") && !report.at("leftProcesses").empty()) {
        marks += " " + state(Mood::Attention, "left processes");
    }
    return marks;
}

Markup matrixFacts(const Json& document) {
    const Json& root = document.at("root");
    const auto textOf = [&](const char* member) {
        return document.at(member).is_null() ? Markup("unknown") : foreign(document.at(member));
    };
    Markup expectation;
    if (!document.at("expectation").is_null()) {
        const bool isMet = document.at("expectation").at("met");
        expectation = path(document.at("expectation").at("file")) + " " +
                      (isMet ? state(Mood::Good, "met") : state(Mood::Bad, "not met"));
    }
    return factList({{"Bundle", path(document.at("bundle"))},
                     {"Identifier", textOf("bundleIdentifier") + ", version " + textOf("bundleVersion")},
                     {"Worked on", root.is_null() ? Markup("an empty root for each case")
                                                  : "a copy of " + path(root) + " for each case"},
                     {"Started", foreign(document.at("started"))},
                     {"Expected", expectation},
                     {"Failed before in", document.at("rerun").is_null() ? Markup() : path(document.at("rerun"))}}) +
           otherMembers(document, {"schema", "host", "command", "bundle", "bundleIdentifier", "bundleVersion", "root",
                                   "started", "rerun", "cases", "products", "languages", "statuses", "counts",
                                   "expectation", "error", "exitStatus"});
}

Markup matrixSections(const Json& document) {
    const Markup failures = failureSection(document);
    return contentsList(!failures.isEmpty()) + gridSection(document) + failures + totalsSection(document) +
           caseSection(document);
}

}  // namespace host::page
