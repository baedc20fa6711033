#include "installer-host/journal/RunJournal.h"

#include <sys/random.h>
#include <sys/stat.h>

#include <algorithm>
#include <exception>
#include <utility>

#include "installer-host/ExitStatus.h"
#include "installer-host/look/EntryDetails.h"
#include "platform/Result.h"

namespace host {

namespace {

std::string randomId() {
    std::string bytes(16, '\0');
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw Failure(ExitStatus::RootNotMade, "there is no random number to name the journal with");
    }
    return hexText(bytes);
}

/// Whether the entry, if there is one, is a property list that was read.
bool isReadList(const std::optional<Entry>& entry) {
    return entry && isPropertyList(*entry) && detailsOf(*entry).propertyList.has_value();
}

/// What became of an entry, as far as the journal does not hold it; empty when it does.
std::string whatIsNotHeld(const EntryChange& change) {
    using Kind = EntryChange::Kind;
    const bool isUnread = change.after && isPropertyList(*change.after) && !isReadList(change.after);
    const bool isList = isReadList(change.before) && !isUnread;
    switch (change.kind) {
        case Kind::Created:
            return S_ISDIR(change.after->status.mode) || isReadList(change.after) ? "" : "created";
        case Kind::Removed:
            return isList ? "" : "removed";
        case Kind::Moved:
            return "moved from " + change.from;
        case Kind::Times:
            return "";
        case Kind::Changed:
            break;
    }
    const Differences& differs = change.differs;
    const std::pair<bool, const char*> kinds[] = {
        {differs.type && !isList, "type"},
        {differs.contents && !isList, "contents"},
        {differs.maybeContents, "contents or times"},
        {differs.mode && !isList, "mode"},
        {differs.owner && !isList, "owner"},
        {differs.target, "target"},
        {differs.device, "device"},
    };
    std::string text;
    for (const auto& [isNotHeld, what] : kinds) {
        text += isNotHeld ? (text.empty() ? "" : ", ") + std::string(what) : "";
    }
    return text;
}

/// The names of the attributes that differ and that users do not set: access lists, and the system's own.
std::string otherAttributes(const EntryChange& change) {
    if (change.kind != EntryChange::Kind::Changed || !change.differs.attributes) {
        return "";
    }
    const auto& old = detailsOf(*change.before).attributes;
    const auto& now = detailsOf(*change.after).attributes;
    std::string text;
    for (const auto* side : {&old, &now}) {
        const auto& other = side == &old ? now : old;
        for (const auto& [name, value] : *side) {
            const auto found = other.find(name);
            const bool isNew = found == other.end() || (side == &old && found->second != value);
            text += isNew && !isUserAttribute(name) ? (text.empty() ? "" : ", ") + ("attribute " + name) : "";
        }
    }
    return text;
}

std::vector<NotHeld> notHeldOf(const Changes& changes) {
    std::vector<NotHeld> things;
    for (const EntryChange& change : changes.entries) {
        const std::string attributes = otherAttributes(change);
        std::string what = whatIsNotHeld(change);
        what += (what.empty() || attributes.empty() ? "" : ", ") + attributes;
        if (!what.empty()) {
            things.push_back({change.path, what});
        }
    }
    return things;
}

}  // namespace

RunJournal::RunJournal(const std::string& path, Journal journal, const RootFolder& root,
                       const std::function<void()>& endIfInterrupted)
    : journal_(std::move(journal)) {
    file_.emplace(path, endIfInterrupted);
    RootRecord::requireOutside(file_->path(), journal_.root, journal_);
    RootRecord::makeFolder(root);
    record_.emplace(root, journal_.root);
    journal_.name.id = randomId();
    journal_.state = Journal::State::Begun;
    journal_.previous = record_->last();
    file_->make(journal_);
    try {
        record_->set(journal_.name);
    } catch (const cv::Fault& fault) {
        abandon();
        throw Failure(ExitStatus::RootNotMade, "the journal cannot be put on record: " + fault.text());
    }
}

RunJournal::~RunJournal() {
    if (journal_.state == Journal::State::Begun) {
        abandon();
    }
}

void RunJournal::abandon() noexcept {
    try {
        record_->set(journal_.previous);
        file_->remove();
    } catch (...) {
        // What stays tells that nothing was changed, and can be undone as well.
        return;
    }
}

void RunJournal::prepare(const Tree& before) {
    Journal prepared = journal_;
    prepared.state = Journal::State::Prepared;
    prepared.inventory = inventoryOf(before);
    try {
        file_->write(prepared);
    } catch (const cv::Fault& fault) {
        throw Failure(ExitStatus::RootNotMade, "the journal cannot be written: " + fault.text());
    }
    journal_ = std::move(prepared);
}

std::vector<std::string> RunJournal::promises() const {
    const auto& entries = journal_.inventory.entries;
    const auto lists =
        std::count_if(entries.begin(), entries.end(), [](const auto& entry) { return isPropertyList(entry.second); });
    std::vector<std::string> sentences{
        "the journal '" + path() + "' holds the property lists (" + std::to_string(lists) +
            ") and the extended attributes, such as Finder flags, of all that is there; undo can put these back, and "
            "remove the property lists and folders that the run makes",
        "it does not hold other files, links, access lists, folders that the run removes or moves, nor modes, owners "
        "and times of anything but property lists: undo cannot put back what the run changes in them"};
    for (const auto& [unseen, problem] : journal_.inventory.unseen) {
        sentences.push_back("it does not hold '" + unseen + "': " + problem);
    }
    return sentences;
}

std::optional<cv::Fault> RunJournal::complete(const Tree& after, const Changes& changes) {
    Journal complete = journal_;
    complete.state = Journal::State::Complete;
    complete.edits = editsBetween(journal_.inventory, inventoryOf(after));
    complete.notHeld = notHeldOf(changes);
    complete.notHeld.insert(complete.notHeld.end(), complete.edits.notHeld.begin(), complete.edits.notHeld.end());
    complete.inventory = {};
    try {
        file_->write(complete);
    } catch (const cv::Fault& fault) {
        return fault;
    }
    journal_ = std::move(complete);
    return std::nullopt;
}

void RunJournal::abandonIfUnchanged(const Tree& before, const Tree& after) {
    if (compareEntries(before, after).changes.empty()) {
        abandon();
    }
}

}  // namespace host
