#include "installer-host/report/JsonReport.h"

#include <nlohmann/json.hpp>

#include "installer-host/report/Phrases.h"

namespace host {

namespace {

using Json = nlohmann::ordered_json;

constexpr int SCHEMA = 1;

std::string write(const Json& report) {
    return report.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

const char* nameOf(Change change) {
    switch (change) {
        case Change::Added:
            return "added";
        case Change::Changed:
            return "changed";
        case Change::Removed:
            return "removed";
        case Change::Unchanged:
            break;
    }
    return "unchanged";
}

const char* nameOf(StepResult::Outcome outcome) {
    switch (outcome) {
        case StepResult::Outcome::NotRun:
            break;
        case StepResult::Outcome::Done:
            return "done";
        case StepResult::Outcome::Returned:
            return "returned";
        case StepResult::Outcome::Exception:
            return "exception";
        case StepResult::Outcome::Crashed:
            return "crashed";
        case StepResult::Outcome::TimedOut:
            return "timed out";
        case StepResult::Outcome::Interrupted:
            return "interrupted";
    }
    return "not run";
}

Json orNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

Json orNull(const std::optional<std::uint32_t>& number) {
    return number ? Json(*number) : Json(nullptr);
}

Json stepJson(const StepResult& result) {
    return {{"step", shortName(result.step)},
            {"outcome", nameOf(result.outcome)},
            {"resultFlagsBefore", orNull(result.flagsBefore)},
            {"resultFlagsAfter", orNull(result.flagsAfter)},
            {"fault", orNull(result.fault)},
            {"faultMessage", orNull(result.faultMessage)}};
}

Json preferenceJson(const KeyChange& change) {
    const bool unchanged = change.change == Change::Unchanged;
    return {{"domain", change.domain},         {"key", change.key},
            {"change", nameOf(change.change)}, {"before", change.before},
            {"after", change.after},           {"note", unchanged ? Json(unchangedNote(change)) : Json(nullptr)}};
}

Json finderJson(const FinderObject& object) {
    const bool known = object.exists && object.problem.empty();
    return {{"exists", object.exists},
            {"flags", known ? Json(object.flags) : Json(nullptr)},
            {"problem", orNull(object.problem)}};
}

Json changesJson(const Changes& changes) {
    Json preferences = Json::array();
    for (const KeyChange& change : changes.preferences) {
        preferences.push_back(preferenceJson(change));
    }
    Json files = Json::array();
    for (const FileChange& file : changes.files) {
        files.push_back({{"path", file.path}, {"change", nameOf(file.change)}});
    }
    Json finder = Json::array();
    for (const auto& [before, after] : changes.finder) {
        finder.push_back({{"path", after.path}, {"before", finderJson(before)}, {"after", finderJson(after)}});
    }
    Json unreadable = Json::array();
    for (const Unreadable& one : changes.unreadable) {
        unreadable.push_back(sentence(one));
    }
    return {{"preferences", preferences}, {"files", files}, {"finderFlags", finder}, {"unreadable", unreadable}};
}

}  // namespace

std::string runJson(const RunResult& result, ExitStatus status) {
    const Options& options = result.options;
    const Installation& installation = options.installation;
    Json steps = Json::array();
    for (const StepResult& step : result.steps) {
        steps.push_back(stepJson(step));
    }
    Json notStored = Json::array();
    for (const cv::Fault& fault : result.notStored) {
        notStored.push_back({{"what", fault.what}, {"reason", fault.reason}});
    }
    Json report{{"schema", SCHEMA},
                {"command", "run"},
                {"bundle", options.bundle},
                {"root", orNull(options.root)},
                {"dryRun", options.dryRun},
                {"product", installation.product},
                {"language", installation.language},
                {"blockVersion", installation.blockVersion},
                {"entry", installation.direct ? "direct" : "table"},
                {"steps", steps}};
    report.update(changesJson(result.changes));
    report["notStored"] = notStored;
    report["exitStatus"] = static_cast<int>(status);
    return write(report);
}

std::string showJson(const Snapshot& snapshot, const std::string& root) {
    Json domains = Json::array();
    for (const auto& [domain, file] : snapshot.domains) {
        domains.push_back({{"domain", domain}, {"problem", orNull(file.problem)}, {"keys", file.keys}});
    }
    Json finder = Json::array();
    for (const FinderObject& object : snapshot.objects) {
        Json entry{{"path", object.path}};
        entry.update(finderJson(object));
        finder.push_back(entry);
    }
    return write({{"schema", SCHEMA},
                  {"command", "show"},
                  {"root", orNull(root)},
                  {"domains", domains},
                  {"files", snapshot.otherFiles},
                  {"finderFlags", finder}});
}

std::string checkJson(const RunResult& result) {
    Json list = Json::array();
    bool ok = true;
    for (const Finding& finding : result.findings) {
        list.push_back({{"subject", finding.subject}, {"ok", finding.ok}, {"text", finding.text}});
        ok = ok && finding.ok;
    }
    return write(
        {{"schema", SCHEMA}, {"command", "check"}, {"bundle", result.options.bundle}, {"ok", ok}, {"findings", list}});
}

}  // namespace host
