// The two steps with every allocation failing in turn, those of the C library and of others included.

#include "CvBase/Mac/AutoreleasePool.h"
#include "platform/PropertyList/PropertyList.h"
#include "platform/StoreFailures.h"
#include "plugin/Steps.h"
#include "tests/support/MallocFailures.h"
#include "tests/support/PreferenceFiles.h"

namespace {

using namespace test;
using cv::plist::Dictionary;
using cv::plist::Integer;
using Step = void (*)(XCodParamBlock*);

const std::string PREFERENCES = "/Library/Preferences/";
const std::string UPDATER = "com.corvane.updater.plist";
const std::string PRODUCT = "com.corvane.audioplugins.Ambrel.plist";
const std::string STATUS_FILE = "/Library/Application Support/Corvane/Updater/install_status.txt";

/// What the preference file holds, "KEY=VALUE;" for each key; the values that are not text are integers.
std::string preferences(const std::string& name) {
    const auto parsed = cv::plist::parse(readFile(PREFERENCES + name));
    EXPECT_TRUE(parsed.root && parsed.root->dictionary() != nullptr) << name << ": " << parsed.reason;
    std::string text;
    for (const auto& [key, value] : parsed.root ? *parsed.root->dictionary() : Dictionary()) {
        text +=
            key + "=" + (value.text() ? *value.text() : std::to_string(std::get<Integer>(value.content).bits)) + ";";
    }
    return text;
}

/// Whether all that the step was to store is stored or known to be not. A status file that the C library has no memory
/// to open cannot be read, and updates are on then.
bool isAccountedFor(Step step) {
    const std::string stored = preferences(UPDATER) + preferences(PRODUCT);
    const auto has = [&stored](const char* text) { return stored.find(text) != std::string::npos; };
    const bool hasChoice = has(has("InstallStatus") ? "UpdateInterval=2" : "UpdateInterval=0");
    return (step == &PreInstall ? has("CurrentVersion=1.00") : hasChoice && has("Lang=fr")) ||
           !cv::storeFailures().empty();
}

/// Runs the step as a host does; whether all is right that can be seen of it at once.
bool runs(Step step) {
    XCodParamBlock block{};
    block.version = XCOD_BLOCK_VERSION;
    block.productCode = 5100;
    block.languageCode = 1;
    {
        const cv::AutoreleasePool pool;
        step(&block);
    }
    endMallocFailures();
    return isAccountedFor(step);
}

/// The preferences of a machine that had the product before, with keys of others.
void writeOldFiles() {
    fs::remove_all(PREFERENCES);
    const auto write = [](const std::string& name, const std::string& entries) {
        writeFile(PREFERENCES + name, "<plist><dict>" + entries + "</dict></plist>");
    };
    write(UPDATER,
          "<key>InstalledProducts/Ambrel/CurrentVersion</key><string>0.90</string>"
          "<key>Others</key><string>text</string><key>UpdateInterval</key><integer>7</integer>");
    write(PRODUCT, "<key>Lang</key><string>de</string><key>Others</key><integer>1</integer>");
    writeFile(STATUS_FILE, "UpdatesDisabled");
    writeFile("/Applications/Corvane/Icon\r", "");
}

TEST(StepsMemory, AnAllocationThatFailsLosesNoFileAndNoKey) {
    using testing::MatchesRegex;
    const auto check = [] {
        EXPECT_THAT(preferences(UPDATER), MatchesRegex("(InstallStatus=Error opening file;)?InstalledProducts/Ambrel/"
                                                       "CurrentVersion=(0.90|1.00);Others=text;UpdateInterval=[027];"));
        EXPECT_THAT(preferences(PRODUCT), MatchesRegex("Lang=(de|fr);Others=1;"));
        EXPECT_THAT(namesIn(PREFERENCES), ElementsAre(PRODUCT, UPDATER));
    };
    for (const Step step : {&PreInstall, &PostInstall}) {
        EXPECT_GT(exhaust([step] { return runs(step); }, writeOldFiles, check), 100);
    }
}

}  // namespace
