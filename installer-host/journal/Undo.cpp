#include "installer-host/journal/Undo.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <optional>
#include <set>
#include <utility>

#include "installer-host/ExitStatus.h"
#include "installer-host/journal/JournalFile.h"
#include "installer-host/journal/RootRecord.h"
#include "installer-host/journal/UndoWork.h"
#include "installer-host/look/EntryDetails.h"
#include "installer-host/look/TreeWalk.h"
#include "platform/Result.h"

namespace host {

namespace {

constexpr const char* NOT_HELD = "the journal does not hold it";

std::string placeOf(const std::string& root) {
    return root.empty() ? "the machine" : "the root '" + root + "'";
}

bool isLast(const Journal& journal, const RootRecord& record) {
    return record.last() && record.last()->id == journal.name.id;
}

/// Whether the journal was undone, or its run was killed before it was put on record: either has nothing to undo.
bool isSpent(const Journal& journal, const RootRecord& record, const std::string& rootPath) {
    const bool hasNothing = journal.state == Journal::State::Undone || journal.state == Journal::State::Begun;
    return hasNothing && !isLast(journal, record) && journal.root == rootPath;
}

[[noreturn]] void refuseElsewhere(const Journal& journal, const std::string& rootPath) {
    throw Failure(
        ExitStatus::Usage,
        "the journal '" + journal.name.path + "' belongs to " + placeOf(journal.root) + ", not to " + placeOf(rootPath),
        journal.root.empty() ? "Say --machine." : "Say --root '" + journal.root + "'.");
}

/// Throws Failure unless this journal is the next to undo on the root. A root that was moved took its record along.
void requireTurn(const Journal& journal, const RootRecord& record, const std::string& rootPath) {
    const std::string what = "the journal '" + journal.name.path + "'";
    const std::optional<JournalName>& last = record.last();
    if (isLast(journal, record) || isSpent(journal, record, rootPath)) {
        return;
    }
    if (journal.root != rootPath) {
        refuseElsewhere(journal, rootPath);
    }
    if (!last) {
        throw Failure(ExitStatus::Usage, what + " is not on record: " + placeOf(rootPath) + " has no run left to undo",
                      "What one copy of a journal undid, another one does not undo again.");
    }
    throw Failure(ExitStatus::Usage, what + " is not the last one: '" + last->path + "' must be undone first",
                  "Without it, neither its run nor those before it can be undone.");
}

/// Looks at the root anew and tells what a killed run changed there until now.
void tellKilledRun(Journal& journal, const RootFolder& root, const std::function<void()>& endIfInterrupted) {
    const Tree now = lookAt(root, journal.scope, nullptr, endIfInterrupted);
    journal.edits = editsBetween(journal.inventory, inventoryOf(now));
    journal.notHeld = journal.edits.notHeld;
}

/// Removes what a killed run left half written, beside the record and beside the property lists.
void removeLeftovers(const UndoWork& work, const RootRecord& record, const Inventory& inventory) {
    try {
        record.removeLeftovers();
    } catch (const cv::Fault&) {
        return;  // nothing can be written here, as putting back will show
    }
    std::set<std::string> folders;
    for (const auto& [path, entry] : inventory.entries) {
        if (isPropertyList(entry) && folders.insert(path.substr(0, path.rfind('/') + 1)).second) {
            try {
                lockFolderOf(work, path).removeLeftovers();
            } catch (const cv::Fault&) {
                continue;  // the next writer in the folder removes them
            }
        }
    }
}

void undoAll(UndoWork& work, const Journal& journal) {
    for (const FileEdit& edit : journal.edits.files) {
        undoFile(work, edit);
    }
    for (const AttributeEdit& edit : journal.edits.attributes) {
        undoAttribute(work, edit);
    }
    std::vector<std::string> folders = journal.edits.foldersMade;
    std::sort(folders.rbegin(), folders.rend());  // what a folder holds comes before the folder
    for (const std::string& path : folders) {
        undoFolder(work, path);
    }
    for (const NotHeld& thing : journal.notHeld) {
        work.leave({UndoItem::What::Other, thing.path, thing.what, {}, {}, "", false}, NOT_HELD);
    }
}

std::string timeNow() {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm parts{};
    gmtime_r(&now, &parts);
    char text[32];
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts));
}

/// Marks the journal as undone, and then puts the one before it on record. Between the two a second undo only does the
/// latter.
void markUndone(UndoWork& work, JournalFile& file, RootRecord& record) {
    Journal journal = work.result.journal;
    try {
        if (journal.state != Journal::State::Undone) {
            journal.state = Journal::State::Undone;
            journal.undone = timeNow();
            journal.inventory = {};
            file.write(journal);
        }
        if (isLast(journal, record)) {
            record.set(journal.previous);
        }
    } catch (const cv::Fault& fault) {
        work.leave({UndoItem::What::Other, file.path(), "journal", {}, {}, "", false}, fault.reason, true);
    }
}

}  // namespace

bool UndoResult::hasFaults() const {
    return std::any_of(left.begin(), left.end(), [](const UndoItem& item) { return item.isFault; });
}

UndoResult undo(const std::string& path, const RootFolder& root, const std::string& rootPath, bool dryRun,
                const std::function<void()>& endIfInterrupted) {
    UndoResult result;
    Journal& journal = result.journal;
    JournalFile file(path, endIfInterrupted);
    journal = file.read();
    if (journal.root.empty() != rootPath.empty()) {
        refuseElsewhere(journal, rootPath);
    }
    result.root = rootPath;
    result.dryRun = dryRun;
    RootRecord record(root, rootPath);
    requireTurn(journal, record, rootPath);
    RootRecord::requireOutside(file.path(), rootPath, journal);
    UndoWork work{root, result, endIfInterrupted, {}};
    if (!dryRun) {
        removeLeftovers(work, record, journal.inventory);
    }
    if (journal.state == Journal::State::Prepared) {
        tellKilledRun(journal, root, endIfInterrupted);
    }
    if (journal.state != Journal::State::Undone) {
        undoAll(work, journal);
    }
    if (!dryRun && !result.hasFaults()) {
        markUndone(work, file, record);
    }
    return result;
}

}  // namespace host
