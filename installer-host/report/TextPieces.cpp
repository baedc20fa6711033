#include "installer-host/report/TextPieces.h"

#include "installer-host/report/Phrases.h"
#include "installer-host/report/Text.h"

namespace host {

namespace {

std::string preferenceLine(const KeyChange& change) {
    static constexpr const char* SIGNS[] = {"+ ", "~ ", "- ", "  "};
    Line line(4);
    line.add(SIGNS[static_cast<int>(change.change)] + inQuotes(change.key)).add("=");
    addValue(line, change.before.is_null() ? change.after : change.before);
    if (change.change == Change::Changed) {
        line.add("->");
        addValue(line, change.after);
    } else if (change.change == Change::Unchanged) {
        line.join(",").addWords(unchangedNote(change));
    }
    return line.text();
}

}  // namespace

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(text.size() < width ? width - text.size() : 0, ' ');
}

std::string placeText(const std::string& root) {
    return root.empty() ? "this machine" : "the private root " + escaped(root);
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

void addValue(Line& line, const TypedValue& value) {
    line.addWords(describe(value)).add("(" + value["type"].get<std::string>() + ")");
}

std::string preferencesText(const std::string& signs, const std::vector<KeyChange>& preferences,
                            const std::string& none) {
    std::string text = "\nPreferences (" + signs + ")\n";
    const std::string* path = nullptr;
    for (const KeyChange& change : preferences) {
        if (path == nullptr || *path != change.path) {
            path = &change.path;
            text += Line(2).addWords(escaped(change.domain.empty() ? change.path : change.domain)).text();
        }
        text += preferenceLine(change);
    }
    return text + (preferences.empty() ? "  " + none + "\n" : "");
}

std::string finderText(const std::vector<FinderChange>& finder) {
    std::string text = "\nFinder flags\n";
    for (const FinderChange& change : finder) {
        Line line(2);
        line.addWords(padded(escaped(change.after.path), 30) + "  " + flagsText(change.before));
        if (differs(change)) {
            line.add("->").addWords(flagsText(change.after));
        } else if (change.after.exists) {
            line.join(",").add("unchanged");
        }
        text += line.text();
    }
    return text;
}

}  // namespace host
