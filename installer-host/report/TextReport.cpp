#include "installer-host/report/TextReport.h"

#include "installer-host/report/Phrases.h"
#include "installer-host/report/Text.h"
#include "plugin/ParamBlock.h"

namespace host {

namespace {

/// The names of the Finder flags that the system's headers give.
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

std::string flagsText(const FinderObject& object) {
    if (!object.problem.empty()) {
        return "cannot be read: " + object.problem;
    }
    if (!object.exists) {
        return "does not exist";
    }
    const std::string names = flagNames(object.flags);
    return hexNumber(object.flags, 4) + (names.empty() ? "" : " (" + names + ")");
}

std::string typedValue(const TypedValue& value) {
    return describe(value) + " (" + value["type"].get<std::string>() + ")";
}

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(text.size() < width ? width - text.size() : 0, ' ');
}

std::string stepLine(const StepResult& result) {
    std::string line = "  " + padded(longName(result.step), 18);
    const auto flags = [](std::optional<std::uint32_t> value) { return value ? hexNumber(*value, 8) : "unknown"; };
    switch (result.outcome) {
        case StepResult::Outcome::NotRun:
            return line + "not run\n";
        case StepResult::Outcome::Done:
            line += result.flagsAfter.value_or(0) & XCOD_RESULT_FAILED ? "failed" : "done";
            break;
        case StepResult::Outcome::Returned:
            line += "returned, but its process did not end as it should";
            break;
        case StepResult::Outcome::Exception:
            line += "ended by an exception of type " + escaped(result.fault);
            line += result.faultMessage.empty() ? "" : ": " + escaped(result.faultMessage);
            break;
        case StepResult::Outcome::Crashed:
            line += "ended the process: " + escaped(result.fault);
            break;
        case StepResult::Outcome::TimedOut:
            line += "did not end in time";
            break;
        case StepResult::Outcome::Interrupted:
            line += "was running when the user ended the run";
            break;
    }
    line += "; resultFlags " + flags(result.flagsBefore);
    return line +
           (result.flagsBefore == result.flagsAfter ? ", unchanged\n" : " -> " + flags(result.flagsAfter) + "\n");
}

std::string preferenceLine(const KeyChange& change) {
    const std::string key = inQuotes(change.key);
    switch (change.change) {
        case Change::Added:
            return "    + " + key + " = " + typedValue(change.after) + "\n";
        case Change::Changed:
            return "    ~ " + key + " = " + typedValue(change.before) + " -> " + typedValue(change.after) + "\n";
        case Change::Removed:
            return "    - " + key + " = " + typedValue(change.before) + "\n";
        case Change::Unchanged:
            break;
    }
    return "      " + key + " = " + typedValue(change.after) + ", " + unchangedNote(change) + "\n";
}

std::string preferencesText(const Changes& changes) {
    std::string text = "Preferences (+ added, ~ changed, - removed)\n";
    const std::string* domain = nullptr;
    for (const KeyChange& change : changes.preferences) {
        if (domain == nullptr || *domain != change.domain) {
            domain = &change.domain;
            text += "  " + escaped(change.domain) + "\n";
        }
        text += preferenceLine(change);
    }
    for (const FileChange& file : changes.files) {
        text += std::string("  ") + (file.change == Change::Added ? "+" : "-") + " file " + escaped(file.path) + "\n";
    }
    return text + (changes.preferences.empty() && changes.files.empty() ? "  nothing changed\n" : "");
}

std::string finderText(const Changes& changes) {
    std::string text = "Finder flags\n";
    for (const auto& [before, after] : changes.finder) {
        const std::string old = flagsText(before);
        const std::string now = flagsText(after);
        text += "  " + padded(escaped(after.path), 30) + "  " + old;
        text += old == now ? (after.exists ? ", unchanged\n" : "\n") : " -> " + now + "\n";
    }
    return text;
}

std::string problemsText(const RunResult& result) {
    std::string text;
    for (const cv::Fault& fault : result.notStored) {
        text += "  not stored: " + escaped(fault.what) + ": " + escaped(fault.reason) + "\n";
    }
    for (const Unreadable& unreadable : result.changes.unreadable) {
        text += "  " + sentence(unreadable) + "\n";
    }
    return text.empty() ? text : "\nProblems\n" + text;
}

std::string placeText(const std::string& root) {
    return root.empty() ? "this machine" : "the private root " + escaped(root);
}

}  // namespace

std::string runText(const RunResult& result) {
    const Options& options = result.options;
    std::string text = "Installation of product " + std::to_string(options.installation.product) + ", language " +
                       std::to_string(options.installation.language) + ", on " + placeText(options.root) +
                       (options.dryRun ? " (dry run: on a copy of it, nothing was changed)" : "") + "\n  with " +
                       escaped(options.bundle) + "\n\nSteps\n";
    for (const StepResult& step : result.steps) {
        text += stepLine(step);
    }
    return text + "\n" + preferencesText(result.changes) + "\n" + finderText(result.changes) + problemsText(result);
}

std::string checkText(const RunResult& result) {
    std::string text = escaped(result.options.bundle) + "\n";
    for (const Finding& finding : result.findings) {
        text += std::string("  ") + (finding.ok ? "ok      " : "failed  ") + padded(finding.subject, 14) +
                escaped(finding.text) + "\n";
    }
    return text;
}

std::string showText(const Snapshot& snapshot, const std::string& root) {
    std::string text = "Preferences of " + placeText(root) + "\n";
    for (const auto& [domain, file] : snapshot.domains) {
        text += "  " + escaped(domain) + (file.problem.empty() ? "" : " cannot be read: " + file.problem) + "\n";
        for (const auto& [key, value] : file.keys) {
            text += "    " + inQuotes(key) + " = " + typedValue(value) + "\n";
        }
    }
    for (const std::string& path : snapshot.otherFiles) {
        text += "  file " + escaped(path) + "\n";
    }
    text += snapshot.domains.empty() && snapshot.otherFiles.empty() ? "  none\n" : "";
    text += "\nFinder flags\n";
    for (const FinderObject& object : snapshot.objects) {
        text += "  " + padded(escaped(object.path), 30) + "  " + flagsText(object) + "\n";
    }
    return text;
}

}  // namespace host
