#include "installer-host/report/JsonReport.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "installer-host/look/JsonPath.h"
#include "installer-host/report/Phrases.h"
#include "installer-host/report/Text.h"

namespace host {

namespace {

/// The version of docs/report.schema.json.
constexpr const char* SCHEMA = "2.1";

const char* nameOf(Command command) {
    switch (command) {
        case Command::Run:
            return "run";
        case Command::Matrix:
            return "matrix";
        case Command::Undo:
            return "undo";
        case Command::Check:
            return "check";
        case Command::Show:
            break;
    }
    return "show";
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

template <typename T>
Json orNull(const std::optional<T>& value) {
    return value ? Json(*value) : Json(nullptr);
}

Json stepJson(const StepResult& result) {
    return {{"step", shortName(result.step)},
            {"outcome", nameOf(result.outcome)},
            {"resultFlagsBefore", orNull(result.flagsBefore)},
            {"resultFlagsAfter", orNull(result.flagsAfter)},
            {"fault", orNull(result.fault)},
            {"faultMessage", orNull(result.faultMessage)},
            {"milliseconds", result.duration.count()}};
}

Json alertJson(const AlertRecord& alert) {
    return {{"title", alert.title},
            {"text", alert.text},
            {"buttons", alert.buttons},
            {"answer", orNull(alert.answer)},
            {"answeredBy", alert.answer ? orNull(alert.answeredBy) : Json(nullptr)}};
}

/// What an entry was or is.
Json entryJson(const std::optional<Entry>& entry) {
    if (!entry) {
        return nullptr;
    }
    const Status& status = entry->status;
    Json attributes = Json::object();
    for (const auto& [name, value] : detailsOf(*entry).attributes) {
        attributes[name] = hexText(value);
    }
    Json json{{"type", typeName(*entry)}, {"mode", modeText(*entry)},
              {"owner", status.owner},    {"group", status.group},
              {"size", nullptr},          {"target", nullptr},
              {"device", nullptr},        {"modified", timeText(status.modified, true)},
              {"attributes", attributes}};
    if (S_ISREG(status.mode)) {
        json["size"] = status.size;
    } else if (S_ISLNK(status.mode)) {
        addPath(json, "target", detailsOf(*entry).target);
    } else if (S_ISCHR(status.mode) || S_ISBLK(status.mode)) {
        json["device"] = deviceText(*entry);
    }
    return json;
}

Json differencesJson(const Differences& differs) {
    const std::pair<bool, const char*> names[] = {
        {differs.type, "type"},     {differs.contents, "contents"}, {differs.maybeContents, "contents or times"},
        {differs.mode, "mode"},     {differs.owner, "owner"},       {differs.attributes, "attributes"},
        {differs.target, "target"}, {differs.device, "device"},
    };
    Json json = Json::array();
    for (const auto& [isDifferent, name] : names) {
        if (isDifferent) {
            json.push_back(name);
        }
    }
    return json;
}

Json changeJson(const EntryChange& change) {
    static constexpr const char* NAMES[] = {"created", "removed", "changed", "moved", "times"};
    Json json = Json::object();
    addPath(json, "path", change.path);
    json["change"] = NAMES[static_cast<int>(change.kind)];
    json["from"] = nullptr;
    if (change.kind == EntryChange::Kind::Moved) {
        addPath(json, "from", change.from);
    }
    json["replaced"] = change.replaced ? Json(typeName(*change.replaced)) : Json(nullptr);
    json["differs"] = differencesJson(change.differs);
    json["before"] = entryJson(change.before);
    json["after"] = entryJson(change.after);
    return json;
}

Json preferenceJson(const KeyChange& change) {
    const bool unchanged = change.change == Change::Unchanged;
    return {{"path", change.path},
            {"domain", orNull(change.domain)},
            {"key", change.key},
            {"change", nameOf(change.change)},
            {"before", change.before},
            {"after", change.after},
            {"note", unchanged ? Json(unchangedNote(change)) : Json(nullptr)}};
}

Json finderJson(const FinderObject& object) {
    const bool known = object.exists && object.problem.empty();
    return {{"exists", object.exists},
            {"flags", known ? Json(object.flags) : Json(nullptr)},
            {"problem", orNull(object.problem)}};
}

Json finderChangeJson(const FinderChange& change) {
    Json json = Json::object();
    addPath(json, "path", change.after.path);
    json["before"] = finderJson(change.before);
    json["after"] = finderJson(change.after);
    return json;
}

Json unreadableJson(const Unreadable& unreadable) {
    const bool isFinder = unreadable.kind == Unreadable::Kind::Finder;
    const bool isUnseen = unreadable.kind == Unreadable::Kind::Unseen;
    Json json = Json::object();
    addPath(json, "path", unreadable.path);
    json["what"] = isFinder ? "Finder flags" : isUnseen ? "file or folder" : "property list";
    json["problem"] = unreadable.problem;
    return json;
}

Json countsJson(const RunResult& result) {
    const Counts counts = countsOf(result.changes);
    return {{"created", counts.created},
            {"removed", counts.removed},
            {"changed", counts.changed},
            {"moved", counts.moved},
            {"times", counts.times},
            {"keysAdded", counts.keysAdded},
            {"keysChanged", counts.keysChanged},
            {"keysRemoved", counts.keysRemoved},
            {"finderFlags", counts.finderFlags},
            {"unreadable", result.changes.unreadable.size()},
            {"notStored", result.notStored.size()},
            {"alerts", result.alerts.size()}};
}

/// Adds what became different on the disk.
void addChanges(Json& report, const Changes& changes) {
    for (const char* list : {"entries", "preferences", "finderFlags", "unreadable"}) {
        report[list] = Json::array();
    }
    for (const EntryChange& change : changes.entries) {
        report["entries"].push_back(changeJson(change));
    }
    for (const KeyChange& change : changes.preferences) {
        report["preferences"].push_back(preferenceJson(change));
    }
    for (const FinderChange& change : changes.finder) {
        report["finderFlags"].push_back(finderChangeJson(change));
    }
    for (const Unreadable& one : changes.unreadable) {
        report["unreadable"].push_back(unreadableJson(one));
    }
}

/// What was run, by whom and when.
void addMetadata(Json& report, const RunResult& result) {
    const Options& options = result.options;
    const Installation& installation = options.installation;
    report.update({{"bundle", options.bundle},
                   {"bundleIdentifier", orNull(result.bundleIdentifier)},
                   {"bundleVersion", orNull(result.bundleVersion)},
                   {"root", orNull(options.root)},
                   {"scope", options.scope},
                   {"user", {{"id", result.userId}, {"name", orNull(result.userName)}}},
                   {"started", timeText(result.started)},
                   {"journal", orNull(options.journal)},
                   {"dryRun", options.dryRun},
                   {"product", installation.product},
                   {"language", installation.language},
                   {"blockVersion", installation.blockVersion},
                   {"entry", installation.direct ? "direct" : "table"}});
}

/// What both kinds of reports of `show` begin with.
Json beginShow(const std::string& root, const Selection& selection) {
    Json report = beginDocument(Command::Show);
    report["root"] = orNull(root);
    report["domain"] = orNull(selection.domain);
    report["key"] = orNull(selection.key);
    return report;
}

}  // namespace

std::string jsonText(const Json& document) {
    return document.dump(2, ' ', true, Json::error_handler_t::replace) + "\n";
}

Json beginDocument(std::optional<Command> command) {
    return {{"schema", SCHEMA},
            {"host", INSTALLER_HOST_VERSION},
            {"command", command ? Json(nameOf(*command)) : Json(nullptr)}};
}

Json endDocument(Json document, const Judgement& judgement) {
    // The first line says what happened, the others what to do.
    const std::string& message = judgement.message;
    const std::size_t end = std::min(message.find('\n'), message.size());
    const bool isError = judgement.status != ExitStatus::Done && judgement.status != ExitStatus::SomethingChanged;
    document["error"] = nullptr;
    if (isError) {
        document["error"] = {{"status", static_cast<int>(judgement.status)},
                             {"what", message.substr(0, end)},
                             {"whatToDo", orNull(message.substr(std::min(end + 1, message.size())))}};
    }
    document["exitStatus"] = static_cast<int>(judgement.status);
    return document;
}

Json runDocument(const RunResult& result, const Judgement& judgement) {
    Json report = beginDocument(Command::Run);
    addMetadata(report, result);
    for (const char* list : {"steps", "alerts", "notStored"}) {
        report[list] = Json::array();
    }
    for (const StepResult& step : result.steps) {
        report["steps"].push_back(stepJson(step));
    }
    for (const AlertRecord& alert : result.alerts) {
        report["alerts"].push_back(alertJson(alert));
    }
    for (const cv::Fault& fault : result.notStored) {
        report["notStored"].push_back({{"what", fault.what}, {"reason", fault.reason}});
    }
    report["limits"] = result.limits;
    report["leftProcesses"] = result.leftProcesses;
    report["expectation"] = nullptr;
    report["changed"] = result.changes.any();
    report["summary"] = summaryOf(result);
    report["counts"] = countsJson(result);
    addChanges(report, result.changes);
    return endDocument(report, judgement);
}

Json showDocument(const Snapshot& snapshot, const std::string& root, const Selection& selection,
                  const Judgement& judgement) {
    Json report = beginShow(root, selection);
    report["value"] = nullptr;
    for (const char* list : {"domains", "files", "finderFlags", "unreadable"}) {
        report[list] = Json::array();
    }
    for (const auto& [domain, file] : snapshot.domains) {
        report["domains"].push_back({{"domain", domain}, {"problem", orNull(file.problem)}, {"keys", file.keys}});
        if (!selection.key.empty() && !file.keys.empty()) {
            report["value"] = file.keys.begin()->second;
        }
    }
    report["files"] = snapshot.otherFiles;
    for (const FinderObject& object : snapshot.objects) {
        Json entry{{"path", object.path}};
        entry.update(finderJson(object));
        report["finderFlags"].push_back(entry);
    }
    for (const auto& [path, problem] : snapshot.unreadable) {
        report["unreadable"].push_back(unreadableJson({Unreadable::Kind::Unseen, path, problem}));
    }
    return endDocument(report, judgement);
}

Json diffDocument(const SnapshotDiff& diff, const std::string& first, const std::string& second,
                  const Selection& selection, const Judgement& judgement) {
    Json report = beginShow(first, selection);
    report["other"] = second;
    report["differs"] = diff.any();
    for (const char* list : {"preferences", "finderFlags", "unreadable"}) {
        report[list] = Json::array();
    }
    for (const KeyChange& change : diff.preferences) {
        report["preferences"].push_back(preferenceJson(change));
    }
    for (const FinderChange& change : diff.finder) {
        report["finderFlags"].push_back(finderChangeJson(change));
    }
    for (const Unreadable& one : diff.unreadable) {
        report["unreadable"].push_back(unreadableJson(one));
    }
    return endDocument(report, judgement);
}

Json checkDocument(const RunResult& result, const Judgement& judgement) {
    Json report = beginDocument(Command::Check);
    report["bundle"] = result.options.bundle;
    report["ok"] = judgement.status == ExitStatus::Done;
    report["findings"] = Json::array();
    for (const Finding& finding : result.findings) {
        report["findings"].push_back({{"subject", finding.subject}, {"ok", finding.ok}, {"text", finding.text}});
    }
    return endDocument(report, judgement);
}

Json errorDocument(std::optional<Command> command, const Judgement& judgement) {
    return endDocument(beginDocument(command), judgement);
}

}  // namespace host
