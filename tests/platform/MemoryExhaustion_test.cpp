// What becomes of property lists and preference files when any one allocation fails, or all from there on.

#include "platform/Preferences/PreferenceFile.h"
#include "platform/PropertyList/PropertyList.h"
#include "tests/support/MallocFailures.h"
#include "tests/support/PreferenceFiles.h"

namespace test {

namespace {

using cv::plist::Dictionary;
using cv::plist::parse;
using cv::plist::Value;

const std::string XML =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\"><plist version=\"1.0\"><dict>"
    "<key>a key that needs a block of its own</key><string>&lt;a text that needs one, too&gt; \xC3\xA9</string>"
    "<key>Old</key><array><integer>-5</integer><real>0.25</real><true/><date>2026-01-02T03:04:05Z</date>"
    "<data>AAECAwQFBgcICQoLDA0ODxAREhM=</data><dict/><array/></array></dict></plist>";

TEST(MemoryExhaustion, IsNeverTakenForDamageInReadingAndWritingPropertyLists) {
    const Value root = parse(XML).root.value();
    const std::string binary = toBinary(root);
    const auto readsRight = [&binary](const std::string& bytes) {
        const cv::plist::Parsed parsed = parse(bytes);
        endMallocFailures();
        return parsed.root && toBinary(*parsed.root) == binary;
    };
    const std::string damaged = XML.substr(0, XML.size() / 2);
    const int attempts = exhaust([&] { return readsRight(XML); }) + exhaust([&] { return readsRight(binary); }) +
                         exhaust([&] { return toBinary(root) == binary; }) +
                         exhaust([&] { return parse(damaged).verdict == cv::plist::Parsed::Verdict::Malformed; });
    EXPECT_GT(attempts, 200);
}

/// A preference file and a change of it.
struct PreferenceScene {
    std::optional<std::string> old;
    bool isDamaged;
    TempDir home{};
    cv::PreferenceLocation location{home / "Library/Preferences", "com.corvane.test.plist"};
    cv::PreferenceChanges changes{{"New key with a block of its own", Value{Dictionary{{"a", {true}}}}},
                                  {"Old", std::nullopt}};

    void prepare() const {
        fs::remove_all(home / "Library");
        if (old) {
            writeFile(location.path(), *old);
        }
    }

    std::optional<std::string> content() const {
        return fs::exists(location.path()) ? std::optional(readFile(location.path())) : std::nullopt;
    }

    /// What is written to standard error while the change is stored.
    std::string store() const {
        return errorsOf([this] { EXPECT_FALSE(writePreferences(location, changes)); });
    }

    /// That the file is the old one or `fresh`, and that nothing is in the way of the next change.
    void check(const std::optional<std::string>& fresh) const {
        const auto now = content();
        const bool isOld = now == old;
        EXPECT_TRUE(isOld || now == fresh);
        const std::string aside = location.path() + ".corrupt-1";
        ASSERT_EQ(fs::exists(aside), isDamaged && !isOld);
        EXPECT_EQ(store().empty(), !(isOld && isDamaged));
        EXPECT_EQ(content(), fresh);
        EXPECT_EQ(namesIn(location.folder).size(), isDamaged ? 2U : 1U) << "no temporary file is left";
        EXPECT_TRUE(!isDamaged || readFile(aside) == *old);
    }
};

TEST(MemoryExhaustion, LeavesTheOldPreferenceFileOrTheNewOne) {
    const PreferenceScene scenes[] = {{XML, false},
                                      {toBinary(*parse(XML).root), false},
                                      {std::nullopt, false},
                                      {XML.substr(0, XML.size() - 20), true}};
    for (const PreferenceScene& scene : scenes) {
        SCOPED_TRACE(&scene - scenes);
        scene.prepare();
        scene.store();
        const auto fresh = scene.content();
        const int attempts = exhaust([&] { return !writePreferences(scene.location, scene.changes); },
                                     [&] { scene.prepare(); }, [&] { scene.check(fresh); });
        EXPECT_GT(attempts, 20);
    }
}

}  // namespace

}  // namespace test
