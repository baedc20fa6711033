#include <algorithm>

#include "installer-host/page/ChangeSections.h"
#include "installer-host/page/Pieces.h"
#include "platform/FinderAttribute.h"

namespace host::page {

namespace {

/// The properties of a file, a folder and so on, by name. One that it does not have is left out.
Facts propertiesOf(const Json& entry) {
    Facts facts;
    for (const auto& [name, value] : entry.items()) {
        if (name == "attributes") {
            for (const auto& [attribute, bytes] : value.items()) {
                facts.emplace_back("attribute " + attribute,
                                   element("bdi.value", "<" + bytes.get<std::string>() + ">"));
            }
        } else if (name == "targetBytes") {
            facts.emplace_back("bytes of the target", foreign(value));
        } else if (!value.is_null()) {
            const Markup text = value.is_string() ? path(value) : Markup(value.dump());
            facts.emplace_back(name, name == "size" ? text + " bytes" : text);
        }
    }
    return facts;
}

Markup factNamed(const std::string& name, const Facts& facts) {
    const auto fact =
        std::find_if(facts.begin(), facts.end(), [&](const Facts::value_type& one) { return one.first == name; });
    return fact == facts.end() ? Markup() : fact->second;
}

/// The names of both, once each.
std::vector<std::string> namesOf(const Facts& before, const Facts& after) {
    std::vector<std::string> names;
    for (const Facts* facts : {&before, &after}) {
        for (const auto& [name, fact] : *facts) {
            if (std::find(names.begin(), names.end(), name) == names.end()) {
                names.push_back(name);
            }
        }
    }
    return names;
}

Markup comparison(const Facts& before, const Facts& after) {
    const Markup none = element("span.none", "none");
    Table table("What it was and what it is", {"Property", "Before", "After"});
    for (const std::string& name : namesOf(before, after)) {
        const Markup was = factNamed(name, before), is = factNamed(name, after);
        const bool isSame = was.html() == is.html();
        table.add({isSame ? foreign(name) : foreign(name) + " " + state(Mood::Changed, "changed"),
                   was.isEmpty() ? none : was, is.isEmpty() ? none : is},
                  isSame ? "" : "differs");
    }
    return table.markup();
}

Mood moodOf(const std::string& change) {
    return change == "created"   ? Mood::Added
           : change == "removed" ? Mood::Removed
           : change == "moved"   ? Mood::Moved
           : change == "times"   ? Mood::Quiet
                                 : Mood::Changed;
}

/// "attribute user.a added", or "Finder flags", which have a section of their own.
Markup attributeChanges(const Json& before, const Json& after) {
    Markup text;
    const auto add = [&](const std::string& name, const char* change) {
        const Markup attribute = "attribute " + foreign(name) + " " + change;
        text += (text.isEmpty() ? Markup() : ", ") + (name == cv::FINDER_INFO_ATTRIBUTE ? "Finder flags" : attribute);
    };
    for (const auto& [name, bytes] : before.items()) {
        if (!after.contains(name) || after.at(name) != bytes) {
            add(name, after.contains(name) ? "changed" : "removed");
        }
    }
    for (const auto& [name, bytes] : after.items()) {
        if (!before.contains(name)) {
            add(name, "added");
        }
    }
    return text;
}

/// One difference of an entry: "mode 0600 → 0644".
Markup differenceText(const std::string& what, const Json& before, const Json& after) {
    const auto fromTo = [&](const std::string& name, const auto& textOf) {
        return name + " " + textOf(before) + " \u2192 " + textOf(after);
    };
    const auto member = [](const char* name) {
        return [name](const Json& entry) {
            const Json& value = entry.at(name);
            return value.is_null() ? Markup("none") : value.is_string() ? path(value) : Markup(value.dump());
        };
    };
    if (what == "contents") {
        return fromTo("contents", member("size")) + " bytes";
    }
    if (what == "contents or times") {
        return what + " (" + after.at("size").dump() + " bytes before and after)";
    }
    if (what == "owner") {
        return fromTo("owner", [](const Json& entry) {
            return Markup(entry.at("owner").dump() + ":" + entry.at("group").dump());
        });
    }
    return what == "attributes" ? attributeChanges(before.at("attributes"), after.at("attributes"))
                                : fromTo(what, member(what.c_str()));
}

/// What an entry's line says after its path.
Markup remarkOn(const Json& change) {
    const Json& after = change.at("after");
    Markup remark;
    for (const Json& what : change.at("differs")) {
        remark += (remark.isEmpty() ? ": " : ", ") + differenceText(what, change.at("before"), after);
    }
    if (!change.at("replaced").is_null()) {
        remark += ", in place of a " + change.at("replaced").get<std::string>();
    }
    if (change.at("change") == "created") {
        const Json& size = after.at("size");
        const Json& target = after.at("target");
        remark += size.is_null() ? Markup() : Markup(", " + size.dump() + " bytes");
        remark += target.is_null() ? Markup() : " \u2192 " + path(target);
    }
    return remark;
}

/// The bytes of names that are not UTF-8.
Facts byteFacts(const Json& change) {
    Facts facts;
    for (const char* name : {"pathBytes", "fromBytes"}) {
        if (change.contains(name)) {
            facts.emplace_back(name == std::string("pathBytes") ? "bytes of the path" : "bytes of the earlier path",
                               foreign(change.at(name)));
        }
    }
    return facts;
}

Markup entryItem(const Json& change) {
    const std::string kind = change.at("change");
    const Json& before = change.at("before");
    const Json& after = change.at("after");
    const std::string type = (after.is_null() ? before : after).at("type");
    const Markup from = change.at("from").is_null() ? Markup() : path(change.at("from")) + " \u2192 ";
    const Markup summary = state(moodOf(kind), kind == "times" ? "times only" : kind) + " " + type + " " + from +
                           path(change.at("path")) + remarkOn(change);
    Facts bytes = byteFacts(change);
    const Markup properties = before.is_null()  ? factList(propertiesOf(after))
                              : after.is_null() ? factList(propertiesOf(before))
                                                : comparison(propertiesOf(before), propertiesOf(after));
    return disclosure(summary, (bytes.empty() ? Markup() : factList(bytes)) + properties);
}

}  // namespace

Markup entrySection(const Json& entries, int level) {
    std::vector<Markup> items;
    for (const Json& change : entries) {
        items.push_back(entryItem(change));
    }
    return section(level, "Files and folders",
                   items.empty() ? element("p.none", "No difference.") : list("entries", items));
}

}  // namespace host::page
