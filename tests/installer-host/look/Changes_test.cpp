#include "installer-host/look/Changes.h"

#include <gtest/gtest.h>

namespace {

using namespace host;

/// What one domain, "d", holds; the text "?" is a file that cannot be read.
Snapshot snapshotOf(const TypedValue& keys, ino_t inode = 1) {
    Snapshot snapshot;
    PreferenceDomain& domain = snapshot.domains["d"];
    domain.status.st_ino = inode;
    domain.problem = keys == "?" ? "closed" : "";
    if (keys.is_object()) {
        domain.keys = keys.get<std::map<std::string, TypedValue>>();
    }
    return snapshot;
}

/// Every change in a word or two: + added, ~ changed, - removed, = unchanged.
std::string textOf(const Changes& changes) {
    constexpr const char* SIGNS[] = {"+", "~", "-", "="};
    constexpr const char* KINDS[] = {"older", "stored", "finder"};
    std::string text;
    for (const KeyChange& key : changes.preferences) {
        text += SIGNS[static_cast<int>(key.change)] + key.key;
    }
    for (const FileChange& file : changes.files) {
        text += SIGNS[static_cast<int>(file.change)] + file.path;
    }
    for (const Unreadable& one : changes.unreadable) {
        text += KINDS[static_cast<int>(one.kind)] + (" " + one.path) + " " + one.problem;
    }
    return text;
}

TEST(Changes, OfADomain) {
    const struct {
        const char* name;
        TypedValue before;
        TypedValue after;
        bool storedAnew;
        bool all;
        const char* changes;
    } cases[] = {
        {"added", {}, {{"a", 1}}, true, false, "+a"},
        {"removed", {{"a", 1}}, {}, true, false, "-a"},
        {"another value", {{"a", 1}}, {{"a", 2}}, true, false, "~a"},
        {"another type", {{"a", 1}}, {{"a", "1"}}, true, false, "~a"},
        {"by key", {{"b", 1}, {"c", 1}, {"d", 1}}, {{"a", 1}, {"b", 2}, {"d", 1}}, true, false, "+a~b-c=d"},
        {"left alone", {{"a", 1}}, {{"a", 1}}, false, false, ""},
        {"left alone, with all", {{"a", 1}}, {{"a", 1}}, false, true, "=a"},
        {"still unreadable", "?", "?", false, false, "older /Library/Preferences/d.plist closed"},
        {"unreadable again", "?", "?", true, false, "stored /Library/Preferences/d.plist closed"},
        {"no longer readable", {{"a", 1}}, "?", false, false, "-astored /Library/Preferences/d.plist closed"},
    };
    for (const auto& c : cases) {
        const Changes changes = compare(snapshotOf(c.before), snapshotOf(c.after, c.storedAnew ? 2 : 1), c.all);
        EXPECT_EQ(textOf(changes), c.changes) << c.name;
    }
    EXPECT_EQ(textOf(compare({}, snapshotOf({{"a", 1}}), false)), "+a") << "a domain that was not there";
    Snapshot touched = snapshotOf({{"a", 1}});
    touched.domains["d"].status.st_mtim.tv_nsec = 1;
    EXPECT_EQ(textOf(compare(snapshotOf({{"a", 1}}), touched, false)), "=a") << "stored anew in the same file";
}

TEST(Changes, OfOtherFilesAndFinderFlags) {
    Snapshot before, after;
    before.otherFiles = {"gone", "kept"};
    after.otherFiles = {"kept", "new"};
    before.objects = {{"/a", true, "", 1}, {"/b", true, "", 2}};
    after.objects = {{"/a", true, "", 3}, {"/b", true, "closed", 0}};
    const Changes changes = compare(before, after, false);
    EXPECT_EQ(textOf(changes), "-gone+newfinder /b closed");
    EXPECT_EQ(changes.finder.at(0).before.flags, 1);
    EXPECT_EQ(changes.finder.at(0).after.flags, 3);
}

}  // namespace
