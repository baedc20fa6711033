#include "installer-host/report/Phrases.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

#include "installer-host/report/Text.h"

namespace host {

namespace {

std::string describeItems(const TypedValue& value) {
    std::string items;
    for (const auto& [key, item] : value["value"].items()) {
        items += items.empty() ? "" : ", ";
        items += value["type"] == "dictionary" ? inQuotes(key) + ": " : "";
        items += describe(item);
    }
    return items;
}

}  // namespace

std::string placeText(const std::string& root) {
    return root.empty() ? "this machine" : "the private root " + escaped(root);
}

std::string describe(const TypedValue& value) {
    constexpr std::size_t MOST_HEX_DIGITS = 64;
    const std::string type = value["type"];
    const TypedValue& content = value["value"];
    if (type == "string") {
        return inQuotes(content.get_ref<const std::string&>());
    }
    if (type == "data") {
        const std::string hex = content;
        return "<" + hex.substr(0, MOST_HEX_DIGITS) + (hex.size() > MOST_HEX_DIGITS ? "..." : "") + ">";
    }
    if (type == "array") {
        return "[" + describeItems(value) + "]";
    }
    if (type == "dictionary") {
        return "{" + describeItems(value) + "}";
    }
    return content.is_string() ? content.get<std::string>() : content.dump();
}

std::string unchangedNote(const KeyChange& change) {
    // Written only when a run could not read the install-status file, and never taken away: without a word about its
    // age it reads like a fault of this run.
    return change.key == "InstallStatus" ? "unchanged: from an earlier run" : "unchanged";
}

Complaint complaint(const Unreadable& unreadable) {
    const bool isFinder = unreadable.kind == Unreadable::Kind::Finder;
    return {(isFinder ? "the Finder flags of " : "") + escaped(unreadable.path), escaped(unreadable.problem)};
}

std::string typeName(const Entry& entry) {
    switch (entry.status.mode & S_IFMT) {
        case S_IFDIR:
            return "folder";
        case S_IFLNK:
            return "link";
        case S_IFIFO:
            return "FIFO";
        case S_IFSOCK:
            return "socket";
        case S_IFCHR:
            return "character device";
        case S_IFBLK:
            return "block device";
        default:
            return "file";
    }
}

std::string modeText(const Entry& entry) {
    constexpr std::uint32_t PERMISSIONS = 07777;
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%04o", entry.status.mode & PERMISSIONS);
    return text.data();
}

std::string deviceText(const Entry& entry) {
    const std::uint64_t number = entry.status.deviceNumber;
    return std::to_string(number >> 32U) + ":" + std::to_string(number & 0xFFFFFFFFU);
}

std::string timeText(DiskTime time, bool exact) {
    const auto seconds = static_cast<std::time_t>(time.seconds);
    std::tm parts{};
    std::array<char, 40> text{};
    std::array<char, 16> fraction{};
    if (gmtime_r(&seconds, &parts) == nullptr) {
        return "out of range";
    }
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(fraction.data(), fraction.size(), ".%09u", time.nanoseconds);
    return std::string(text.data(), length) + (exact ? fraction.data() : "") + "Z";
}

std::string timeText(std::chrono::system_clock::time_point time) {
    return timeText(DiskTime{std::chrono::system_clock::to_time_t(time), 0}, false);
}

std::string flagNames(std::uint16_t flags) {
    static constexpr struct {
        std::uint16_t bit;
        const char* name;
    } NAMES[] = {{0x8000, "alias"},       {0x4000, "invisible"},    {0x2000, "bundle"},
                 {0x1000, "name locked"}, {0x0800, "stationery"},   {0x0400, "custom icon"},
                 {0x0100, "inited"},      {0x0080, "no init code"}, {0x0040, "shared program"}};
    std::string names;
    for (const auto& [bit, name] : NAMES) {
        if ((flags & bit) != 0) {
            names += names.empty() ? "" : ", ";
            names += name;
        }
    }
    return names;
}

Counts countsOf(const Changes& changes) {
    using Kind = EntryChange::Kind;
    const auto entries = [&](Kind kind) {
        return std::count_if(changes.entries.begin(), changes.entries.end(),
                             [=](const EntryChange& change) { return change.kind == kind; });
    };
    const auto keys = [&](Change kind) {
        return std::count_if(changes.preferences.begin(), changes.preferences.end(),
                             [=](const KeyChange& change) { return change.change == kind; });
    };
    const auto unsign = [](std::ptrdiff_t count) { return static_cast<std::size_t>(count); };
    Counts counts;
    counts.created = unsign(entries(Kind::Created));
    counts.removed = unsign(entries(Kind::Removed));
    counts.changed = unsign(entries(Kind::Changed));
    counts.moved = unsign(entries(Kind::Moved));
    counts.times = unsign(entries(Kind::Times));
    counts.keysAdded = unsign(keys(Change::Added));
    counts.keysChanged = unsign(keys(Change::Changed));
    counts.keysRemoved = unsign(keys(Change::Removed));
    counts.finderFlags = unsign(std::count_if(changes.finder.begin(), changes.finder.end(), differs));
    return counts;
}

std::string summaryOf(const RunResult& result) {
    if (!result.changes.any()) {
        const auto isDone = [](const StepResult& step) {
            return step.outcome == StepResult::Outcome::Done && step.flagsAfter.value_or(0) == 0;
        };
        const bool allDone = std::all_of(result.steps.begin(), result.steps.end(), isDone);
        const std::string product = std::to_string(result.options.installation.product);
        return std::string("no step changed anything") + (result.changes.storedAnew
                                                              ? ": what was stored was there already"
                                                          : allDone ? ": the bundle may not know product " + product
                                                                    : "");
    }
    const Counts counts = countsOf(result.changes);
    const struct {
        std::size_t count;
        const char* one;
        const char* many;
    } parts[] = {
        {counts.created, "created", "created"},
        {counts.changed, "changed", "changed"},
        {counts.moved, "moved", "moved"},
        {counts.removed, "removed", "removed"},
        {counts.keysAdded, "key added", "keys added"},
        {counts.keysChanged, "key changed", "keys changed"},
        {counts.keysRemoved, "key removed", "keys removed"},
    };
    std::string text;
    for (const auto& [count, one, many] : parts) {
        if (count != 0) {
            text += (text.empty() ? "" : ", ") + counted(count, one, many);
        }
    }
    return text;
}

}  // namespace host
