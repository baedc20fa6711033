#include "installer-host/report/TextReport.h"

#include <sys/stat.h>

#include <array>
#include <cstdio>

#include "installer-host/report/Lines.h"
#include "installer-host/report/Phrases.h"
#include "installer-host/report/Text.h"
#include "installer-host/report/TextPieces.h"
#include "platform/FinderAttribute.h"
#include "plugin/ParamBlock.h"

namespace host {

namespace {

std::string outcomeText(const StepResult& result) {
    switch (result.outcome) {
        case StepResult::Outcome::NotRun:
            break;
        case StepResult::Outcome::Done:
            return (result.flagsAfter.value_or(0) & XCOD_RESULT_FAILED) != 0 ? "failed" : "done";
        case StepResult::Outcome::Returned:
            return "returned, but its process did not end as it should";
        case StepResult::Outcome::Exception:
            return "ended by an exception of type " + escaped(result.fault) +
                   (result.faultMessage.empty() ? "" : ": " + escaped(result.faultMessage));
        case StepResult::Outcome::Crashed:
            return "ended the process: " + escaped(result.fault);
        case StepResult::Outcome::TimedOut:
            return "did not end before the time-out";
        case StepResult::Outcome::Interrupted:
            return "was running when the user ended the run";
    }
    return "not run";
}

std::string stepLine(const StepResult& result) {
    const auto flags = [](std::optional<std::uint32_t> value) { return value ? hexNumber(*value, 8) : "unknown"; };
    Line line(2, 6);
    line.add(padded(longName(result.step), 17)).addWords(outcomeText(result));
    if (result.outcome != StepResult::Outcome::NotRun) {
        line.add("in").add(secondsText(result.duration)).join(";").add("resultFlags").add(flags(result.flagsBefore));
        if (result.flagsBefore == result.flagsAfter) {
            line.join(",").add("unchanged");
        } else {
            line.add("->").add(flags(result.flagsAfter));
        }
    }
    return line.text();
}

std::string alertsText(const RunResult& result) {
    std::string text = result.alerts.empty() ? "" : "\nAlerts\n";
    for (const AlertRecord& alert : result.alerts) {
        text += Line(2).addWords(inQuotes(alert.title)).join(":").addWords(inQuotes(alert.text)).text();
        Line buttons(4);
        buttons.add("with");
        for (const std::string& button : alert.buttons) {
            buttons.addWords(inQuotes(button));
        }
        buttons.join(",");
        if (alert.answer) {
            buttons.addWords("answered " + inQuotes(*alert.answer)).addWords("by: " + escaped(alert.answeredBy));
        } else {
            buttons.addWords("not answered: the run ended first");
        }
        text += buttons.text();
    }
    return text;
}

/// The things that differ in an entry, with a comma between them.
class DifferenceList {
public:
    /// Adds to `line`; `isFirst` when nothing stands before the list that a comma is to follow.
    DifferenceList(Line& line, bool isFirst) : line_(line), isFirst_(isFirst) {}

    void add(const std::string& what) {
        if (!isFirst_) {
            line_.join(",");
        }
        isFirst_ = false;
        line_.addWords(what);
    }
    void add(const std::string& what, const std::string& before, const std::string& after) {
        add(what + " " + before + " -> " + after);
    }

    /// "attribute user.a added", or "Finder flags", which have a section of their own.
    void addAttributes(const Details& before, const Details& after) {
        for (const auto& [name, value] : before.attributes) {
            const auto now = after.attributes.find(name);
            if (now == after.attributes.end() || now->second != value) {
                addAttribute(name, now == after.attributes.end() ? "removed" : "changed");
            }
        }
        for (const auto& [name, value] : after.attributes) {
            if (before.attributes.count(name) == 0) {
                addAttribute(name, "added");
            }
        }
    }

private:
    void addAttribute(const std::string& name, const char* what) {
        add(name == cv::FINDER_INFO_ATTRIBUTE ? "Finder flags" : "attribute " + escaped(name) + " " + what);
    }

    Line& line_;
    bool isFirst_;
};

void addDifferences(const EntryChange& change, DifferenceList list) {
    const Entry& before = *change.before;
    const Entry& after = *change.after;
    const Differences& differs = change.differs;
    const auto owner = [](const Entry& entry) {
        return std::to_string(entry.status.owner) + ":" + std::to_string(entry.status.group);
    };
    if (differs.contents) {
        list.add("contents", std::to_string(before.status.size), std::to_string(after.status.size) + " bytes");
    }
    if (differs.maybeContents) {
        list.add("contents or times (" + std::to_string(after.status.size) + " bytes before and after)");
    }
    if (differs.mode) {
        list.add("mode", modeText(before), modeText(after));
    }
    if (differs.owner) {
        list.add("owner", owner(before), owner(after));
    }
    if (differs.attributes) {
        list.addAttributes(detailsOf(before), detailsOf(after));
    }
    if (differs.target) {
        list.add("target", escaped(detailsOf(before).target), escaped(detailsOf(after).target));
    }
    if (differs.device) {
        list.add("device", deviceText(before), deviceText(after));
    }
}

std::string createdText(const Entry& entry) {
    const std::uint32_t mode = entry.status.mode;
    return S_ISREG(mode)                    ? ", " + std::to_string(entry.status.size) + " bytes"
           : S_ISLNK(mode)                  ? " -> " + escaped(detailsOf(entry).target)
           : S_ISCHR(mode) || S_ISBLK(mode) ? ", " + deviceText(entry)
                                            : "";
}

std::string entryLine(const EntryChange& change) {
    using Kind = EntryChange::Kind;
    const std::string path = escaped(change.path);
    const std::string type = typeName(change.after ? *change.after : *change.before) + " ";
    Line line(2);
    switch (change.kind) {
        case Kind::Created:
            return line.addWords("+ " + type + path + createdText(*change.after)).text();
        case Kind::Removed:
            return line.addWords("- " + type + path).text();
        case Kind::Times:
            return line.addWords("~ " + type + path + ": times, modified")
                .add(timeText(change.before->status.modified, true))
                .add("->")
                .add(timeText(change.after->status.modified, true))
                .text();
        case Kind::Moved:
            line.addWords("> " + type + escaped(change.from) + " -> " + path +
                          (change.replaced ? ", in place of a " + typeName(*change.replaced) : ""));
            break;
        case Kind::Changed:
            if (change.differs.type) {
                return line.addWords("~ " + path + ": " + typeName(*change.before) + " -> " + typeName(*change.after))
                    .join(S_ISLNK(change.after->status.mode) ? " (" + escaped(detailsOf(*change.after).target) + ")"
                                                             : createdText(*change.after))
                    .text();
            }
            line.addWords("~ " + type + path + ":");
            break;
    }
    addDifferences(change, DifferenceList(line, change.kind == Kind::Changed));
    return line.text();
}

std::string entriesText(const Changes& changes) {
    std::string text = "\nFiles and folders (+ created, ~ changed, - removed, > moved)\n";
    for (const EntryChange& change : changes.entries) {
        text += entryLine(change);
    }
    return text + (changes.entries.empty() ? "  nothing changed\n" : "");
}

std::string problemsText(const RunResult& result) {
    std::string text;
    for (const cv::Fault& fault : result.notStored) {
        text += Line(2).addWords("not stored: " + escaped(fault.what) + ": " + escaped(fault.reason)).text();
    }
    for (const Unreadable& unreadable : result.changes.unreadable) {
        const auto [what, why] = complaint(unreadable);
        text += Line(2).addWords(what + " cannot be read: " + why).text();
    }
    return text.empty() ? text : "\nProblems\n" + text;
}

std::string processesText(const RunResult& result) {
    std::string text =
        result.leftProcesses.empty() ? "" : "\nProcesses that the steps left running, ended by the host\n";
    for (const std::string& name : result.leftProcesses) {
        text += Line(2).addWords(escaped(name)).text();
    }
    return text;
}

std::string limitsText(const RunResult& result) {
    std::string text = result.limits.empty() ? "" : "\nLimits\n";
    for (const std::string& limit : result.limits) {
        text += Line(2).addWords(limit).text();
    }
    return text;
}

std::string headText(const RunResult& result) {
    const Options& options = result.options;
    std::string text =
        Line(0, 2)
            .addWords("Installation of product " + std::to_string(options.installation.product) + ", language " +
                      std::to_string(options.installation.language) + ", on " + placeText(options.root) +
                      (options.dryRun ? " (dry run on a copy; the root itself is unchanged)" : ""))
            .text();
    text += Line(2).addWords("with " + escaped(options.bundle)).text();
    if (!result.bundleIdentifier.empty()) {
        text += Line(2).addWords(escaped(result.bundleIdentifier) + " " + escaped(result.bundleVersion)).text();
    }
    if (!options.journal.empty()) {
        text += Line(2).addWords("journal " + escaped(options.journal)).text();
    }
    const std::string id = std::to_string(result.userId);
    return text + Line(2)
                      .addWords("started " + timeText(result.started) + " by " +
                                (result.userName.empty() ? "user " + id : escaped(result.userName)) +
                                ", installer-host " INSTALLER_HOST_VERSION)
                      .text();
}

}  // namespace

std::string runText(const RunResult& result) {
    return headText(result) + "\n" + runBody(result);
}

std::string runBody(const RunResult& result) {
    std::string text = "Steps\n";
    for (const StepResult& step : result.steps) {
        text += stepLine(step);
    }
    return text + alertsText(result) +
           preferencesText("+ added, ~ changed, - removed", result.changes.preferences, "nothing changed") +
           finderText(result.changes.finder) + entriesText(result.changes) + problemsText(result) +
           processesText(result) + limitsText(result) + "\n" +
           Line(0, 2).addWords("In all: " + summaryOf(result) + ".").text();
}

std::string runProblemsText(const RunResult& result) {
    std::string text;
    for (const StepResult& step : result.steps) {
        const bool isDone =
            step.outcome == StepResult::Outcome::Done && (step.flagsAfter.value_or(0) & XCOD_RESULT_FAILED) == 0;
        text += isDone ? "" : stepLine(step);
    }
    return (text.empty() ? "" : "Steps\n" + text) + problemsText(result);
}

std::string checkText(const RunResult& result, bool onlyFailed) {
    constexpr std::size_t TEXT_COLUMN = 24;
    std::string text = onlyFailed ? "" : Line(0).addWords(escaped(result.options.bundle)).text();
    for (const Finding& finding : result.findings) {
        if (onlyFailed && finding.ok) {
            continue;
        }
        text += Line(2, TEXT_COLUMN)
                    .add((finding.ok ? "ok      " : "failed  ") + padded(finding.subject, 13))
                    .addWords(escaped(finding.text))
                    .text();
    }
    return text;
}

}  // namespace host
