#include "installer-host/page/RunSections.h"

#include <iterator>
#include <set>

#include "installer-host/page/AnyValue.h"
#include "installer-host/page/ChangeSections.h"
#include "installer-host/page/Pieces.h"
#include "installer-host/report/Text.h"
#include "plugin/ParamBlock.h"

namespace host::page {

namespace {

Markup hexOrUnknown(const Json& flags) {
    return flags.is_null() ? Markup("unknown") : element("code", hexNumber(flags.get<std::uint32_t>(), 8));
}

Markup outcomeOf(const Json& step) {
    const std::string outcome = step.at("outcome");
    const bool hasFailed = !step.at("resultFlagsAfter").is_null() &&
                           (step.at("resultFlagsAfter").get<std::uint32_t>() & XCOD_RESULT_FAILED) != 0;
    if (outcome == "done") {
        return hasFailed ? state(Mood::Bad, "failed: done, with the failure bit set") : state(Mood::Good, "done");
    }
    const bool isQuiet = outcome == "not run";
    Markup text = state(isQuiet ? Mood::Quiet : Mood::Bad,
                        outcome == "returned" ? "returned, but its process did not end as it should" : outcome);
    for (const char* member : {"fault", "faultMessage"}) {
        text += step.at(member).is_null() ? Markup() : ": " + foreign(step.at(member));
    }
    return text;
}

Markup stepSection(const Json& steps, int level) {
    Table table("What the plug-in's steps did", {"Step", "Outcome", "Time", "resultFlags before", "and after"});
    for (const Json& step : steps) {
        table.add({step.at("step").get<std::string>() + "-install step", outcomeOf(step),
                   step.at("milliseconds").dump() + " ms", hexOrUnknown(step.at("resultFlagsBefore")),
                   hexOrUnknown(step.at("resultFlagsAfter"))});
    }
    return section(level, "Steps", table.markup());
}

Markup alertCard(const Json& alert) {
    std::vector<Markup> buttons;
    bool isFound = false;
    for (const Json& button : alert.at("buttons")) {
        const bool isChosen = !isFound && button == alert.at("answer");
        isFound = isFound || isChosen;
        buttons.push_back(lines(button) + (isChosen ? " " + state(Mood::Good, "chosen") : Markup()));
    }
    const Markup answer =
        alert.at("answer").is_null()
            ? state(Mood::Attention, "not answered: the run ended first")
            : "Answered " + lines("\"" + alert.at("answer").get<std::string>() + "\"") +
                  (alert.at("answeredBy").is_null() ? Markup() : " by: " + foreign(alert.at("answeredBy")));
    return element("div.alert", element("p.title", lines(alert.at("title"))) + element("p", lines(alert.at("text"))) +
                                    list("buttons", buttons)) +
           element("p.answer", answer);
}

Markup alertSection(const Json& alerts, int level) {
    std::vector<Markup> cards;
    for (const Json& alert : alerts) {
        cards.push_back(alertCard(alert));
    }
    return cards.empty() ? Markup() : section(level, "Alerts", list("alerts", cards));
}

Markup problemSection(const Json& report, int level) {
    std::vector<Markup> problems;
    for (const Json& one : report.at("notStored")) {
        problems.push_back(state(Mood::Bad, "not stored") + " " + foreign(one.at("what")) + ": " +
                           foreign(one.at("reason")));
    }
    for (const Json& one : report.at("unreadable")) {
        problems.push_back(unreadableText(one));
    }
    for (const Json& one : report.at("leftProcesses")) {
        problems.push_back(state(Mood::Attention, "left running") + " the process " + foreign(one));
    }
    return problems.empty() ? Markup() : section(level, "Problems", list("problems", problems));
}

Markup limitSection(const Json& limits, int level) {
    return limits.empty() ? Markup() : section(level, "Limits that held for the bundle's code", anyValue(limits));
}

Markup placeOf(const Json& root) {
    return root.is_null() ? Markup("this machine") : "the private root " + path(root);
}

Markup userText(const Json& user) {
    const std::string id = "user " + user.at("id").dump();
    return user.at("name").is_null() ? Markup(id) : foreign(user.at("name")) + " (" + id + ")";
}

/// The members of a run's document that have a place of their own on the page.
const std::set<std::string> SAID_ELSEWHERE = {
    "schema",  "host",      "command", "bundle",      "bundleIdentifier", "bundleVersion", "root",
    "scope",   "user",      "started", "dryRun",      "product",          "language",      "blockVersion",
    "entry",   "steps",     "alerts",  "notStored",   "limits",           "leftProcesses", "changed",
    "summary", "counts",    "entries", "preferences", "finderFlags",      "unreadable",    "expectation",
    "error",   "exitStatus"};

const char* meaningOf(int status) {
    static constexpr const char* MEANINGS[] = {
        "done",          "step failed", "wrong usage", "bundle unusable", "plug-in refused",    "step ended by a fault",
        "could not run", "incomplete",  "unexpected",  "timed out",       "done, with changes", "not there"};
    return status < static_cast<int>(std::size(MEANINGS)) ? MEANINGS[status] : "ended by the user";
}

}  // namespace

Markup verdictOf(const Json& document) {
    const int status = document.at("exitStatus");
    const bool isGood = status == 0 || status == 10;
    return state(isGood ? Mood::Good : Mood::Bad, meaningOf(status)) +
           element("span.status", " exit status " + std::to_string(status));
}

Markup errorNote(const Json& document) {
    const Json& error = document.at("error");
    if (error.is_null()) {
        return {};
    }
    const Markup advice = error.at("whatToDo").is_null() ? Markup() : element("p", lines(error.at("whatToDo")));
    return element("div.error", element("p", lines(error.at("what"))) + advice);
}

Markup countList(const Json& counts) {
    std::vector<Markup> some, zeros;
    for (const auto& [name, count] : counts.items()) {
        const std::string words = name == "finderFlags" ? "Finder flags" : wordsOf(name);
        (count == 0 ? zeros : some).push_back(element("b", count.dump()) + " " + words);
    }
    return (some.empty() ? Markup() : list("counts some", some)) +
           (zeros.empty() ? Markup() : list("counts zeros", zeros));
}

Markup runFacts(const Json& report) {
    const auto textOf = [&](const char* member) {
        return report.at(member).is_null() ? Markup("unknown") : foreign(report.at(member));
    };
    return factList(
               {{"Bundle", path(report.at("bundle"))},
                {"Identifier", textOf("bundleIdentifier") + ", version " + textOf("bundleVersion")},
                {"Worked on", placeOf(report.at("root"))},
                {"Looked at", report.at("scope").empty() ? Markup() : anyValue(report.at("scope"))},
                {"Dry run", report.at("dryRun").get<bool>() ? "yes: on a copy, the root itself is unchanged" : "no"},
                {"Started", foreign(report.at("started")) + " by " + userText(report.at("user"))},
                {"Steps called", report.at("entry") == "table" ? "through the interface table" : "directly"},
                {"Block version", report.at("blockVersion").dump()}}) +
           otherMembers(report, SAID_ELSEWHERE);
}

Markup runSections(const Json& report, int level) {
    return problemSection(report, level) + expectationSection(report, level) + stepSection(report.at("steps"), level) +
           alertSection(report.at("alerts"), level) + preferenceSection(report.at("preferences"), level) +
           finderSection(report.at("finderFlags"), level) + entrySection(report.at("entries"), level) +
           limitSection(report.at("limits"), level);
}

}  // namespace host::page
