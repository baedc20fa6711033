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

/// What is in the place of a preference file.
struct Scene {
    const char* name;
    std::optional<std::string> file;
    bool isDamaged;
};

class PreferenceExhaustion : public testing::TestWithParam<Scene> {
protected:
    void prepare() const {
        fs::remove_all(home_ / "Library");
        if (GetParam().file) {
            writeFile(location_.path(), *GetParam().file);
        }
    }

    std::optional<std::string> content() const {
        return fs::exists(location_.path()) ? std::optional(readFile(location_.path())) : std::nullopt;
    }

    /// Stores the change; empty, or what went wrong.
    std::string store() const {
        const auto fault = writePreferences(location_, changes_);
        return fault ? fault->text() : "";
    }

    /// That the file is the old one or `fresh`, and that nothing is in the way of the next change.
    void check(const std::optional<std::string>& fresh) const {
        const auto now = content();
        const bool isOld = now == GetParam().file;
        EXPECT_TRUE(isOld || now == fresh);
        const std::string aside = location_.path() + ".corrupt-1";
        ASSERT_EQ(fs::exists(aside), GetParam().isDamaged && !isOld);
        EXPECT_EQ(errorsOf([this] { EXPECT_EQ(store(), ""); }).empty(), !(isOld && GetParam().isDamaged));
        EXPECT_EQ(content(), fresh);
        EXPECT_EQ(namesIn(location_.folder).size(), GetParam().isDamaged ? 2U : 1U) << "no temporary file is left";
        EXPECT_TRUE(!GetParam().isDamaged || readFile(aside) == *GetParam().file);
    }

    TempDir home_;
    const cv::PreferenceLocation location_{home_ / "Library/Preferences", "com.corvane.test.plist"};
    const cv::PreferenceChanges changes_{{"New key with a block of its own", Value{Dictionary{{"a", {true}}}}},
                                         {"Old", std::nullopt}};
};

TEST_P(PreferenceExhaustion, LeavesTheOldFileOrTheNewOne) {
    prepare();
    errorsOf([this] { EXPECT_EQ(store(), ""); });
    const auto fresh = content();
    const int attempts = exhaust([this] { return !writePreferences(location_, changes_); }, [this] { prepare(); },
                                 [&] { check(fresh); });
    EXPECT_GT(attempts, 20);
}

INSTANTIATE_TEST_SUITE_P(Files, PreferenceExhaustion,
                         testing::Values(Scene{"Xml", XML, false}, Scene{"Binary", toBinary(*parse(XML).root), false},
                                         Scene{"Missing", std::nullopt, false},
                                         Scene{"Damaged", XML.substr(0, XML.size() - 20), true}),
                         [](const auto& scene) { return scene.param.name; });

}  // namespace

}  // namespace test
