// The journal as JSON.

#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "installer-host/JsonInput.h"
#include "installer-host/journal/Journal.h"
#include "installer-host/look/EntryDetails.h"
#include "installer-host/look/JsonPath.h"

namespace host {

namespace {

using Json = nlohmann::ordered_json;

/// The version of docs/journal.schema.json.
constexpr const char* SCHEMA = "1.0";
constexpr std::uint32_t PERMISSIONS = 07777;

constexpr std::pair<Journal::State, const char*> STATES[] = {{Journal::State::Begun, "begun"},
                                                             {Journal::State::Prepared, "prepared"},
                                                             {Journal::State::Complete, "complete"},
                                                             {Journal::State::Undone, "undone"}};

const char* nameOf(Journal::State state) {
    return STATES[static_cast<std::size_t>(state)].second;
}

Journal::State stateOf(const std::string& name) {
    for (const auto& [state, word] : STATES) {
        if (name == word) {
            return state;
        }
    }
    throw std::invalid_argument("'" + name + "' is not a state of journals");
}

/// Adds a path, or null in place of an empty one.
void addPathOrNull(Json& object, const std::string& key, const std::string& path) {
    object[key] = nullptr;
    if (!path.empty()) {
        addPath(object, key, path);
    }
}

std::string pathOrNullIn(const Json& object, const std::string& key) {
    return object.at(key).is_null() ? "" : pathIn(object, key);
}

/// A path inside the root. Throws for one that is no clean absolute path.
std::string pathInRootIn(const Json& object) {
    std::string path = pathIn(object, "path");
    const std::string slashed = path + "/";
    const bool isClean = path.find('\0') == std::string::npos && slashed.find("//") == std::string::npos &&
                         slashed.find("/./") == std::string::npos && slashed.find("/../") == std::string::npos;
    if (path != "/" && (path.empty() || path.front() != '/' || !isClean)) {
        throw std::invalid_argument("'" + path + "' is not a path");
    }
    return path;
}

Json bytesOrNull(const std::optional<std::string>& bytes) {
    return bytes ? Json(hexText(*bytes)) : Json(nullptr);
}

std::optional<std::string> bytesOrNullIn(const Json& object, const char* key) {
    const Json& bytes = object.at(key);
    return bytes.is_null() ? std::nullopt : std::optional(bytesOfHex(bytes.get<std::string>()));
}

Json nameJson(const std::optional<JournalName>& name) {
    Json json;
    if (name) {
        addPath(json, "path", name->path);
        json["id"] = name->id;
    }
    return json;
}

Json ownersJson(const Entry& entry) {
    std::array<char, 16> mode{};
    std::snprintf(mode.data(), mode.size(), "%04o", entry.status.mode & PERMISSIONS);
    return {{"mode", mode.data()}, {"owner", entry.status.owner}, {"group", entry.status.group}};
}

/// A property list, or null for none; `isWhole`: with its bytes.
Json listJson(const std::optional<Entry>& list, bool isWhole) {
    if (!list) {
        return nullptr;
    }
    Json json = ownersJson(*list);
    if (isWhole) {
        const DiskTime modified = list->status.modified;
        json["modified"] = {{"seconds", modified.seconds}, {"nanoseconds", modified.nanoseconds}};
        json["contents"] = bytesOrNull(detailsOf(*list).propertyList);
    }
    return json;
}

std::uint32_t modeOf(const std::string& text) {
    std::size_t end = 0;
    const unsigned long mode = std::stoul(text, &end, 8);
    if (end != text.size() || mode > PERMISSIONS) {
        throw std::invalid_argument("'" + text + "' is not a mode");
    }
    return static_cast<std::uint32_t>(mode);
}

/// The property list that is told under `key`, if one is.
std::optional<Entry> listIn(const Json& object, const char* key, bool isWhole) {
    const Json& json = object.at(key);
    if (json.is_null()) {
        return std::nullopt;
    }
    Entry entry;
    entry.hasStatus = true;
    entry.status.mode = S_IFREG | modeOf(json.at("mode").get<std::string>());
    entry.status.owner = wholeNumberIn<std::uint32_t>(json, "owner");
    entry.status.group = wholeNumberIn<std::uint32_t>(json, "group");
    Details details;
    if (isWhole) {
        const Json& modified = json.at("modified");
        entry.status.modified = {wholeNumberIn<std::int64_t>(modified, "seconds"),
                                 wholeNumberIn<std::uint32_t>(modified, "nanoseconds")};
        details.propertyList = bytesOfHex(json.at("contents").get<std::string>());
    }
    entry.details = std::make_shared<const Details>(std::move(details));
    return entry;
}

Json attributesJson(const Entry& entry) {
    Json list = Json::array();
    for (const auto& [name, value] : userAttributes(entry)) {
        Json one = Json::object();
        addPath(one, "name", name);
        one["value"] = hexText(value);
        list.push_back(std::move(one));
    }
    return list;
}

Json inventoryJson(const Inventory& inventory) {
    Json entries = Json::array();
    for (const auto& [path, entry] : inventory.entries) {
        Json one = Json::object();
        addPath(one, "path", path);
        one["folder"] = S_ISDIR(entry.status.mode);
        one["propertyList"] = listJson(isPropertyList(entry) ? std::optional(entry) : std::nullopt, true);
        one["attributes"] = attributesJson(entry);
        entries.push_back(std::move(one));
    }
    Json unseen = Json::array();
    for (const auto& [path, problem] : inventory.unseen) {
        Json one = Json::object();
        addPath(one, "path", path);
        one["problem"] = problem;
        unseen.push_back(std::move(one));
    }
    return {{"entries", std::move(entries)}, {"unseen", std::move(unseen)}};
}

Entry inventoryEntryFrom(const Json& one, const std::string& path) {
    Entry entry = listIn(one, "propertyList", true).value_or(Entry());
    entry.name = path.substr(path.rfind('/') + 1);
    if (one.at("folder").get<bool>()) {
        entry.status.mode = S_IFDIR;
    }
    Details details = detailsOf(entry);
    for (const Json& attribute : one.at("attributes")) {
        details.attributes.emplace(pathIn(attribute, "name"), bytesOfHex(attribute.at("value").get<std::string>()));
    }
    entry.details = std::make_shared<const Details>(std::move(details));
    return entry;
}

Inventory inventoryFrom(const Json& json) {
    Inventory inventory;
    for (const Json& one : json.at("entries")) {
        const std::string path = pathInRootIn(one);
        inventory.entries.emplace(path, inventoryEntryFrom(one, path));
    }
    for (const Json& one : json.at("unseen")) {
        inventory.unseen.emplace(pathInRootIn(one), one.at("problem").get<std::string>());
    }
    return inventory;
}

Json fileJson(const FileEdit& edit) {
    Json json = Json::object();
    addPath(json, "path", edit.path);
    json["before"] = listJson(edit.before, true);
    json["after"] = listJson(edit.after, false);
    json["keys"] = Json::array();
    for (const KeyEdit& key : edit.keys) {
        json["keys"].push_back({{"key", key.key}, {"before", key.before}, {"after", key.after}});
    }
    return json;
}

FileEdit fileFrom(const Json& json) {
    FileEdit edit{pathInRootIn(json), listIn(json, "before", true), listIn(json, "after", false), {}};
    for (const Json& key : json.at("keys")) {
        const KeyEdit one{key.at("key").get<std::string>(), key.at("before"), key.at("after")};
        for (const TypedValue* value : {&one.before, &one.after}) {
            if (!value->is_null()) {
                plistValue(*value);
            }
        }
        edit.keys.push_back(one);
    }
    return edit;
}

Json attributeJson(const AttributeEdit& edit) {
    Json json = Json::object();
    addPath(json, "path", edit.path);
    addPath(json, "name", edit.name);
    json["before"] = bytesOrNull(edit.before);
    json["after"] = bytesOrNull(edit.after);
    return json;
}

AttributeEdit attributeFrom(const Json& json) {
    return {pathInRootIn(json), pathIn(json, "name"), bytesOrNullIn(json, "before"), bytesOrNullIn(json, "after")};
}

void addEdits(Json& json, const Journal& journal) {
    for (const char* list : {"propertyLists", "attributes", "foldersMade", "notHeld"}) {
        json[list] = Json::array();
    }
    for (const FileEdit& edit : journal.edits.files) {
        json["propertyLists"].push_back(fileJson(edit));
    }
    for (const AttributeEdit& edit : journal.edits.attributes) {
        json["attributes"].push_back(attributeJson(edit));
    }
    for (const std::string& path : journal.edits.foldersMade) {
        Json one = Json::object();
        addPath(one, "path", path);
        json["foldersMade"].push_back(std::move(one));
    }
    for (const NotHeld& thing : journal.notHeld) {
        Json one = Json::object();
        addPath(one, "path", thing.path);
        one["what"] = thing.what;
        json["notHeld"].push_back(std::move(one));
    }
}

void readEdits(const Json& json, Journal& journal) {
    for (const Json& one : json.at("propertyLists")) {
        journal.edits.files.push_back(fileFrom(one));
    }
    for (const Json& one : json.at("attributes")) {
        journal.edits.attributes.push_back(attributeFrom(one));
    }
    for (const Json& one : json.at("foldersMade")) {
        journal.edits.foldersMade.push_back(pathInRootIn(one));
    }
    for (const Json& one : json.at("notHeld")) {
        journal.notHeld.push_back({pathInRootIn(one), one.at("what").get<std::string>()});
    }
}

void requireVersion(const Json& json) {
    const std::string version = json.at("journal").get<std::string>();
    if (version.substr(0, version.find('.')) != "1") {
        throw std::invalid_argument("it has version " + version + ", and this installer-host reads versions 1.x");
    }
}

}  // namespace

std::string journalText(const Journal& journal) {
    Json json{{"journal", SCHEMA}, {"host", INSTALLER_HOST_VERSION}, {"id", journal.name.id}};
    json["state"] = nameOf(journal.state);
    json["undone"] = journal.undone.empty() ? Json(nullptr) : Json(journal.undone);
    addPathOrNull(json, "root", journal.root);
    json["previous"] = nameJson(journal.previous);
    json["started"] = journal.started;
    addPath(json, "bundle", journal.bundle);
    json["product"] = journal.product;
    json["language"] = journal.language;
    json["scope"] = Json::array();
    for (const std::string& folder : journal.scope) {
        Json one = Json::object();
        addPath(one, "path", folder);
        json["scope"].push_back(std::move(one));
    }
    if (journal.state == Journal::State::Prepared) {
        json["inventory"] = inventoryJson(journal.inventory);
    } else if (journal.state != Journal::State::Begun) {
        addEdits(json, journal);
    }
    return json.dump(1, ' ', true, Json::error_handler_t::replace) + "\n";
}

Journal journalFrom(const std::string& text) {
    const auto json = parsedJson<Json>(text);
    requireVersion(json);
    Journal journal;
    journal.name.id = json.at("id").get<std::string>();
    journal.state = stateOf(json.at("state").get<std::string>());
    journal.root = pathOrNullIn(json, "root");
    if (const Json& previous = json.at("previous"); !previous.is_null()) {
        journal.previous = {pathIn(previous, "path"), previous.at("id").get<std::string>()};
    }
    journal.started = json.at("started").get<std::string>();
    journal.bundle = pathIn(json, "bundle");
    journal.product = wholeNumberIn<std::int32_t>(json, "product");
    journal.language = wholeNumberIn<std::int32_t>(json, "language");
    for (const Json& folder : json.at("scope")) {
        journal.scope.push_back(pathInRootIn(folder));
    }
    if (journal.state == Journal::State::Prepared) {
        journal.inventory = inventoryFrom(json.at("inventory"));
    } else if (journal.state != Journal::State::Begun) {
        readEdits(json, journal);
    }
    journal.undone = json.at("undone").is_null() ? "" : json.at("undone").get<std::string>();
    return journal;
}

}  // namespace host
