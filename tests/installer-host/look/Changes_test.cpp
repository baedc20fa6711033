#include "installer-host/look/Changes.h"

#include <gtest/gtest.h>

namespace {

using namespace host;

using Keys = std::map<std::string, TypedValue>;

PreferenceDomain domainWith(const Keys& keys, const std::string& problem = "", ino_t inode = 1) {
    PreferenceDomain domain;
    domain.keys = keys;
    domain.problem = problem;
    domain.status.st_ino = inode;
    return domain;
}

Snapshot snapshotWith(const PreferenceDomain& domain) {
    Snapshot snapshot;
    snapshot.domains["d"] = domain;
    return snapshot;
}

/// Each key with a sign before it: + added, ~ changed, - removed, = unchanged.
std::string signsOf(const Changes& changes) {
    std::string text;
    for (const KeyChange& change : changes.preferences) {
        text += "+~-="[static_cast<int>(change.change)] + change.key;
    }
    return text;
}

TEST(Changes, OfKeys) {
    const struct {
        const char* name;
        Keys before;
        Keys after;
        bool storedAnew;
        bool all;
        const char* signs;
    } cases[] = {
        {"added", {}, {{"a", 1}}, true, false, "+a"},
        {"removed", {{"a", 1}}, {}, true, false, "-a"},
        {"another value", {{"a", 1}}, {{"a", 2}}, true, false, "~a"},
        {"another type", {{"a", 1}}, {{"a", "1"}}, true, false, "~a"},
        {"by key", {{"b", 1}, {"c", 1}, {"d", 1}}, {{"a", 1}, {"b", 2}, {"d", 1}}, true, false, "+a~b-c=d"},
        {"stored as it was", {{"a", 1}}, {{"a", 1}}, true, false, "=a"},
        {"left alone", {{"a", 1}}, {{"a", 1}}, false, false, ""},
        {"left alone, with all", {{"a", 1}}, {{"a", 1}}, false, true, "=a"},
    };
    for (const auto& c : cases) {
        const Snapshot before = snapshotWith(domainWith(c.before));
        const Snapshot after = snapshotWith(domainWith(c.after, "", c.storedAnew ? 2 : 1));
        EXPECT_EQ(signsOf(compare(before, after, c.all)), c.signs) << c.name;
    }
    const Snapshot some = snapshotWith(domainWith({{"a", 1}}));
    EXPECT_EQ(signsOf(compare({}, some, false)), "+a") << "a domain that was not there";
    EXPECT_EQ(signsOf(compare(some, {}, false)), "-a") << "a domain that is gone";
}

TEST(Changes, SeeWhetherAFileWasStoredAnew) {
    const PreferenceDomain old = domainWith({{"a", 1}});
    PreferenceDomain size = old, second = old, fraction = old;
    size.status.st_size = 1;
    second.status.st_mtim.tv_sec = 1;
    fraction.status.st_mtim.tv_nsec = 1;
    for (const PreferenceDomain& now : {size, second, fraction}) {
        EXPECT_EQ(signsOf(compare(snapshotWith(old), snapshotWith(now), false)), "=a");
    }
}

TEST(Changes, TellWhatCannotBeRead) {
    using Kind = Unreadable::Kind;
    const struct {
        const char* name;
        const char* before;
        bool storedAnew;
        Kind kind;
    } cases[] = {
        {"still unreadable", "damaged", false, Kind::Older},
        {"unreadable again", "damaged", true, Kind::Stored},
        {"no longer readable", "", false, Kind::Stored},
    };
    for (const auto& c : cases) {
        const Snapshot after = snapshotWith(domainWith({}, "closed", c.storedAnew ? 2 : 1));
        const Changes changes = compare(snapshotWith(domainWith({}, c.before)), after, false);
        ASSERT_EQ(changes.unreadable.size(), 1U) << c.name;
        EXPECT_EQ(changes.unreadable[0].kind, c.kind) << c.name;
        EXPECT_EQ(changes.unreadable[0].path, "/Library/Preferences/d.plist");
        EXPECT_EQ(changes.unreadable[0].problem, "closed");
    }
}

TEST(Changes, OfOtherFilesAndFinderFlags) {
    Snapshot before, after;
    before.otherFiles = {"gone", "kept"};
    after.otherFiles = {"kept", "new"};
    before.objects = {{"/a", true, "", 1}, {"/b", true, "", 2}};
    after.objects = {{"/a", true, "", 3}, {"/b", true, "closed", 0}};
    const Changes changes = compare(before, after, false);
    ASSERT_EQ(changes.files.size(), 2U);
    EXPECT_TRUE(changes.files[0].path == "gone" && changes.files[0].change == Change::Removed);
    EXPECT_TRUE(changes.files[1].path == "new" && changes.files[1].change == Change::Added);
    ASSERT_EQ(changes.finder.size(), 2U);
    EXPECT_TRUE(changes.finder[0].before.flags == 1 && changes.finder[0].after.flags == 3);
    ASSERT_EQ(changes.unreadable.size(), 1U);
    EXPECT_TRUE(changes.unreadable[0].path == "/b" && changes.unreadable[0].kind == Unreadable::Kind::Finder);
}

}  // namespace
