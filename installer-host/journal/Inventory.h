#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "installer-host/look/Tree.h"
#include "installer-host/look/TypedValue.h"

namespace host {

/// What a journal can tell of one look at a root: the property lists (files named *.plist), all that has extended
/// attributes of the kind that users set ("user."), of which the Finder information is one, and the folders.
struct Inventory {
    std::map<std::string, Entry> entries;  ///< by path
    std::map<std::string, std::string>
        unseen;  ///< what could not be looked at, by path, and why, to end a sentence with
};

Inventory inventoryOf(const Tree& tree);

/// Whether users set the extended attribute of this name, and not the system.
bool isUserAttribute(const std::string& name);

/// The extended attributes of the entry that users set, by name.
std::map<std::string, std::string> userAttributes(const Entry& entry);

/// What a run made of one key of a property list; null for a key that is not there.
struct KeyEdit {
    std::string key;
    TypedValue before;
    TypedValue after;
};

/// What a run made of one property list. Of the entry before it, the status has mode, owner, group and the time of the
/// last change of contents, and the details have the bytes; of the entry after it, the status has mode, owner and
/// group.
struct FileEdit {
    std::string path;
    std::optional<Entry> before;  ///< unset: no property list stood there
    std::optional<Entry> after;   ///< unset: none stands there now
    std::vector<KeyEdit> keys;    ///< those that changed
};

/// What a run made of one extended attribute; unset where there is none.
struct AttributeEdit {
    std::string path;
    std::string name;
    std::optional<std::string> before;
    std::optional<std::string> after;
};

/// Something that a run changed and that its journal does not hold.
struct NotHeld {
    std::string path;
    std::string what;  ///< "created", "removed", "contents", "mode", ...
};

/// What a run changed of the things that a journal tells.
struct Edits {
    std::vector<FileEdit> files;            ///< by path
    std::vector<AttributeEdit> attributes;  ///< by path, then by name
    std::vector<std::string> foldersMade;   ///< by path
    std::vector<NotHeld> notHeld;           ///< property lists that hold too much to be told, by path
};

/// What differs between two looks. Of what one of them could not see nothing is told.
Edits editsBetween(const Inventory& before, const Inventory& after);

}  // namespace host
