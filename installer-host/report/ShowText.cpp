#include "installer-host/report/ShowText.h"

#include "installer-host/report/Lines.h"
#include "installer-host/report/Phrases.h"
#include "installer-host/report/Text.h"
#include "installer-host/report/TextPieces.h"

namespace host {

namespace {

std::string keyLines(const PreferenceDomain& domain, std::size_t indent) {
    std::string text;
    for (const auto& [key, value] : domain.keys) {
        Line line(indent);
        addValue(line.add(inQuotes(key)).add("="), value);
        text += line.text();
    }
    return text;
}

/// The value without the types of its parts: what JSON calls it.
TypedValue untyped(const TypedValue& value) {
    const TypedValue& content = value.at("value");
    if (value.at("type") != "array" && value.at("type") != "dictionary") {
        return content;
    }
    TypedValue plain = content;
    for (TypedValue& part : plain) {
        part = untyped(part);
    }
    return plain;
}

std::string valueAlone(const TypedValue& value) {
    const TypedValue plain = untyped(value);
    return plain.is_string() ? plain.get<std::string>()
                             : plain.dump(-1, ' ', false, TypedValue::error_handler_t::replace);
}

}  // namespace

std::string unreadableText(const Snapshot& snapshot) {
    std::string text;
    for (const auto& [path, problem] : snapshot.unreadable) {
        text += Line(2).addWords(escaped(path) + " cannot be read: " + problem).text();
    }
    for (const auto& [domain, file] : snapshot.domains) {
        text +=
            file.problem.empty() ? "" : Line(2).addWords(escaped(domain) + " cannot be read: " + file.problem).text();
    }
    for (const FinderObject& object : snapshot.objects) {
        text += object.problem.empty()
                    ? ""
                    : Line(2).addWords("the Finder flags of " + escaped(object.path) + " " + flagsText(object)).text();
    }
    return text.empty() ? text : "Problems\n" + text;
}

std::string showText(const Snapshot& snapshot, const std::string& root) {
    std::string text = Line(0, 2).addWords("Preferences of " + placeText(root)).text();
    for (const auto& [path, problem] : snapshot.unreadable) {
        text += Line(2).addWords(escaped(path) + " cannot be read: " + problem).text();
    }
    for (const auto& [domain, file] : snapshot.domains) {
        const std::string problem = file.problem.empty() ? "" : " cannot be read: " + file.problem;
        text += Line(2).addWords(escaped(domain) + problem).text() + keyLines(file, 4);
    }
    for (const std::string& path : snapshot.otherFiles) {
        text += Line(2).addWords("file " + escaped(path)).text();
    }
    const bool isEmpty = snapshot.domains.empty() && snapshot.otherFiles.empty() && snapshot.unreadable.empty();
    text += isEmpty ? "  none\n\nFinder flags\n" : "\nFinder flags\n";
    for (const FinderObject& object : snapshot.objects) {
        text += Line(2).addWords(padded(escaped(object.path), 30) + "  " + flagsText(object)).text();
    }
    return text;
}

std::string selectionText(const Snapshot& snapshot, const Selection& selection) {
    const auto domain = snapshot.domains.find(selection.domain);
    if (domain == snapshot.domains.end()) {
        return "";
    }
    if (selection.key.empty()) {
        return keyLines(domain->second, 0);
    }
    const auto value = domain->second.keys.find(selection.key);
    return value == domain->second.keys.end() ? "" : valueAlone(value->second) + "\n";
}

std::string diffText(const SnapshotDiff& diff, const std::string& first, const std::string& second) {
    const std::string text =
        Line(0, 2).addWords("Differences between " + placeText(first) + " and " + placeText(second)).text() +
        preferencesText("+ only in the second, ~ different, - only in the first", diff.preferences, "nothing differs") +
        finderText(diff.finder) + (diff.finder.empty() ? "  nothing differs\n" : "");
    const std::string problems = unreadableText(diff);
    return text + (problems.empty() ? "" : "\n" + problems);
}

std::string unreadableText(const SnapshotDiff& diff) {
    std::string text;
    for (const Unreadable& unreadable : diff.unreadable) {
        const auto [what, why] = complaint(unreadable);
        text += Line(2).addWords(what + " cannot be read: " + why).text();
    }
    return text.empty() ? text : "Problems\n" + text;
}

}  // namespace host
