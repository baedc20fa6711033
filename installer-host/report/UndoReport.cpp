#include "installer-host/report/UndoReport.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "installer-host/look/JsonPath.h"
#include "installer-host/look/Snapshot.h"
#include "installer-host/report/Lines.h"
#include "installer-host/report/Phrases.h"
#include "installer-host/report/Text.h"
#include "installer-host/report/TextPieces.h"
#include "platform/FinderAttribute.h"

namespace host {

namespace {

using What = UndoItem::What;

/// What an item is, in both reports.
std::string nameOf(What what) {
    static constexpr const char* NAMES[] = {"key", "file", "contents", "mode", "owner", "attribute", "folder", "other"};
    static_assert(std::size(NAMES) == static_cast<std::size_t>(What::Other) + 1);
    return NAMES[static_cast<std::size_t>(what)];
}

bool isFinderInfo(const UndoItem& item) {
    return item.what == What::Attribute && item.name == cv::FINDER_INFO_ATTRIBUTE;
}

/// A value of a key with its type, the Finder flags, or another thing as it stands.
std::string told(const UndoItem& item, const TypedValue& value) {
    if (value.is_null()) {
        return "none";
    }
    if (item.what == What::Key) {
        return describe(value) + " (" + value["type"].get<std::string>() + ")";
    }
    const std::string text = value.get<std::string>();
    if (isFinderInfo(item)) {
        const std::string bytes = bytesOfHex(text);
        return flagsText(finderObject(item.path, &bytes));
    }
    return escaped(text);
}

/// What undoing makes of it: "+ ", "- " or "~ ", and what it is.
std::string subjectOf(const UndoItem& item) {
    const char* sign = item.what == What::Other ? "  " : item.from.is_null() ? "+ " : item.to.is_null() ? "- " : "~ ";
    switch (item.what) {
        case What::Key:
            return sign + inQuotes(item.name) + " =";
        case What::Attribute:
            return sign + (isFinderInfo(item) ? "Finder flags" : "attribute " + escaped(item.name));
        case What::Other:
            return sign + escaped(item.name);
        default:
            return sign + nameOf(item.what);
    }
}

std::string itemLine(const UndoItem& item) {
    Line line(4);
    line.add(subjectOf(item));
    const bool isWhole = item.what == What::File || item.what == What::Folder || item.what == What::Other;
    if (!isWhole) {
        line.addWords(told(item, item.from.is_null() ? item.to : item.from));
    }
    if (!isWhole && !item.from.is_null() && !item.to.is_null()) {
        line.add("->").addWords(told(item, item.to));
    }
    if (!item.reason.empty()) {
        line.join(":").addWords(escaped(item.reason));
    }
    return line.text();
}

std::string itemsText(const std::vector<UndoItem>& items) {
    std::string text;
    const std::string* path = nullptr;
    for (const UndoItem& item : items) {
        if (path == nullptr || *path != item.path) {
            path = &item.path;
            const std::string domain = domainAt(item.path);
            text += Line(2).addWords(escaped(domain.empty() ? item.path : domain)).text();
        }
        text += itemLine(item);
    }
    return text.empty() ? "  nothing\n" : text;
}

/// What there is to know of the journal before its items.
std::string noteOf(const UndoResult& result) {
    switch (result.journal.state) {
        case Journal::State::Undone:
            return "This journal was undone at " + result.journal.undone + "; nothing is left to do.";
        case Journal::State::Prepared:
            return "The run was killed: all that differs from what stood there before it counts as its work, whoever "
                   "changed it, but for the contents of files that are not property lists, which its journal does not "
                   "hold.";
        case Journal::State::Begun:
            return "The run was killed before its first step.";
        case Journal::State::Complete:
            break;
    }
    return "";
}

std::size_t faultsOf(const UndoResult& result) {
    return static_cast<std::size_t>(
        std::count_if(result.left.begin(), result.left.end(), [](const UndoItem& item) { return item.isFault; }));
}

std::string summaryOf(const UndoResult& result) {
    return std::to_string(result.restored.size()) + (result.dryRun ? " would be put back, " : " put back, ") +
           std::to_string(result.left.size()) + " left alone";
}

Json itemJson(const UndoItem& item, bool isLeft) {
    Json json = Json::object();
    addPath(json, "path", item.path);
    json["what"] = nameOf(item.what);
    json["name"] = nullptr;
    if (!item.name.empty()) {
        addPath(json, "name", item.name);
    }
    json["from"] = item.from;
    json["to"] = item.to;
    if (isLeft) {
        json["reason"] = item.reason;
        json["failed"] = item.isFault;
    }
    return json;
}

const char* nameOf(Journal::State state) {
    switch (state) {
        case Journal::State::Begun:
            return "begun";
        case Journal::State::Prepared:
            return "prepared";
        case Journal::State::Complete:
            return "complete";
        case Journal::State::Undone:
            break;
    }
    return "undone";
}

}  // namespace

std::string undoText(const UndoResult& result) {
    const Journal& journal = result.journal;
    std::string text = Line(0, 2)
                           .addWords("Undo of product " + std::to_string(journal.product) + ", language " +
                                     std::to_string(journal.language) + ", on " + placeText(result.root) +
                                     (result.dryRun ? " (dry run; nothing is changed)" : ""))
                           .text();
    text += Line(2).addWords("journal " + escaped(journal.name.path)).text();
    text +=
        Line(2).addWords("of the run started " + escaped(journal.started) + " with " + escaped(journal.bundle)).text();
    if (const std::string note = noteOf(result); !note.empty()) {
        text += "\n" + Line(0).addWords(escaped(note)).text();
    }
    text += "\nPut back (+ added, ~ changed, - removed)\n" + itemsText(result.restored);
    text += "\nLeft alone\n" + itemsText(result.left);
    return text + "\n" + Line(0, 2).addWords("In all: " + summaryOf(result) + ".").text();
}

std::string undoProblemsText(const UndoResult& result) {
    std::vector<UndoItem> faults;
    std::copy_if(result.left.begin(), result.left.end(), std::back_inserter(faults),
                 [](const UndoItem& item) { return item.isFault; });
    return faults.empty() ? "" : "Not put back\n" + itemsText(faults);
}

Json undoDocument(const UndoResult& result, const Judgement& judgement) {
    Json report = beginDocument(Command::Undo);
    addPath(report, "journal", result.journal.name.path);
    report["journalState"] = nameOf(result.journal.state);
    report["root"] = nullptr;
    if (!result.root.empty()) {
        addPath(report, "root", result.root);
    }
    report["dryRun"] = result.dryRun;
    report["restored"] = Json::array();
    report["left"] = Json::array();
    for (const UndoItem& item : result.restored) {
        report["restored"].push_back(itemJson(item, false));
    }
    for (const UndoItem& item : result.left) {
        report["left"].push_back(itemJson(item, true));
    }
    report["changed"] = !result.restored.empty();
    report["summary"] = summaryOf(result);
    report["counts"] = {
        {"restored", result.restored.size()}, {"left", result.left.size()}, {"failed", faultsOf(result)}};
    return endDocument(std::move(report), judgement);
}

}  // namespace host
