#include "installer-host/page/HtmlPage.h"

#include "installer-host/page/AnyValue.h"
#include "installer-host/page/Frame.h"
#include "installer-host/page/MatrixSections.h"
#include "installer-host/page/Pieces.h"
#include "installer-host/page/RunSections.h"
#include "installer-host/page/ShowSections.h"

namespace host {

namespace {

using namespace page;

std::string runPage(const Json& report) {
    const bool isDry = report.at("dryRun");
    const std::string title = "Product " + report.at("product").dump() + ", language " + report.at("language").dump();
    const Markup summary = element("p.lead", report.at("summary").get<std::string>() + ".");
    return wholePage({isDry ? "Dry run of an installation" : "Installation", title, verdictOf(report),
                      errorNote(report) + summary + countList(report.at("counts")) + runFacts(report)},
                     runSections(report, 2), report);
}

/// What a `show` was asked for.
Markup showFacts(const Json& document) {
    const auto member = [&](const char* name) {
        const bool isGiven = document.contains(name) && !document.at(name).is_null();
        return isGiven ? anyValue(document.at(name)) : Markup();
    };
    const Markup root = document.at("root").is_null() ? Markup("this machine") : member("root");
    const bool isDiff = document.contains("other");
    return factList({{isDiff ? "Before" : "Of", root},
                     {"After", member("other")},
                     {"Only the domain", member("domain")},
                     {"Only the key", member("key")},
                     {"Value", member("value")}});
}

std::string showPage(const Json& document) {
    return wholePage({"Preferences and Finder flags", "What is on the disk", verdictOf(document),
                      errorNote(document) + showFacts(document)},
                     showSections(document), document);
}

std::string diffPage(const Json& document) {
    const bool differs = document.at("differs");
    return wholePage({"Comparison of two roots", differs ? "They differ" : "They are alike", verdictOf(document),
                      errorNote(document) + showFacts(document)},
                     diffSections(document), document);
}

std::string checkPage(const Json& document) {
    return wholePage({"Check of a bundle", document.at("ok").get<bool>() ? "A usable plug-in" : "Not a usable plug-in",
                      verdictOf(document), errorNote(document) + element("p.lead", path(document.at("bundle")))},
                     checkSections(document), document);
}

/// "1 product", "2 products".
std::string countOf(const Json& array, const std::string& noun) {
    return std::to_string(array.size()) + " " + noun + (array.size() == 1 ? "" : "s");
}

std::string matrixPage(const Json& document) {
    const Json& counts = document.at("counts");
    const std::string lead = counts.at("passed").dump() + " of " + counts.at("cases").dump() + " installations passed.";
    const std::string title =
        countOf(document.at("products"), "product") + " in " + countOf(document.at("languages"), "language");
    return wholePage({"Matrix of installations", title, verdictOf(document),
                      errorNote(document) + element("p.lead", lead) + countList(counts) + matrixFacts(document)},
                     matrixSections(document), document);
}

/// The page of a command that came to nothing, or that no other page is made for.
std::string otherPage(const Json& document) {
    const Json& command = document.at("command");
    const std::string name = command.is_null() ? "the command line" : command.get<std::string>();
    return wholePage({"installer-host", "Report of " + name, verdictOf(document), errorNote(document)},
                     otherMembers(document, {"schema", "host", "command", "error", "exitStatus"}), document);
}

}  // namespace

std::string htmlPage(const Json& document) {
    return document.contains("steps")      ? runPage(document)
           : document.contains("cases")    ? matrixPage(document)
           : document.contains("domains")  ? showPage(document)
           : document.contains("differs")  ? diffPage(document)
           : document.contains("findings") ? checkPage(document)
                                           : otherPage(document);
}

}  // namespace host
