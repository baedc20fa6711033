// The two steps, called directly, in a private root: what they do when something goes wrong under them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <new>
#include <string>
#include <vector>

#include "platform/MessageSend.h"
#include "plugin/Catalogue.h"
#include "plugin/Steps.h"
#include "tests/plugin/Faults.h"
#include "tests/support/CFSupport.h"
#include "tests/support/FailingAllocations.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* STATUS_FILE = "/Library/Application Support/Corvane/Updater/install_status.txt";
constexpr const char* PREFERENCES = "/Library/Preferences";
constexpr const char* VENDOR_FOLDER = "/Applications/Corvane";
constexpr const char* ICON_FILE = "/Applications/Corvane/Icon\r";
constexpr std::int32_t AMBREL = 5100;

using Step = void (*)(XCodParamBlock*);

XCodParamBlock makeBlock(std::int32_t product) {
    XCodParamBlock block{};
    block.version = XCOD_BLOCK_VERSION;
    block.productCode = product;
    block.resultFlags = 0x80000000;
    block.languageCode = 1;
    return block;
}

/// Calls a step inside an autorelease pool, as a host does, and returns the block's result.
std::uint32_t call(Step step, XCodParamBlock block) {
    const id pool = cv::send<id>(cv::send<id>(cv::classNamed("NSAutoreleasePool"), "alloc"), "init");
    step(&block);
    cv::send<void>(pool, "drain");
    return block.resultFlags;
}

void runStep(Step step, std::int32_t product = AMBREL) {
    EXPECT_EQ(call(step, makeBlock(product)), 0x80000000u);
}

/// What python3's plistlib reads in a preference file, as Python writes it; "none" when there is no file.
std::string preferences(const std::string& domain) {
    const std::string path = std::string(PREFERENCES) + "/" + domain + ".plist";
    if (!fs::exists(path)) {
        return "none";
    }
    const char* const script =
        "import plistlib, sys; d = plistlib.load(open(sys.argv[1], 'rb')); print({k: d[k] for k in sorted(d)}, end='')";
    return test::run({"python3", "-c", script, path}).out;
}

std::ptrdiff_t openFiles() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

/// What `operation` writes to standard error. (googletest's own capture needs /tmp, which can only be read here.)
template <typename Operation>
std::string standardErrorOf(Operation operation) {
    const int captured = memfd_create("captured", 0);
    const int original = dup(STDERR_FILENO);
    dup2(captured, STDERR_FILENO);
    operation();
    dup2(original, STDERR_FILENO);
    close(original);
    std::string text = test::readFile("/proc/self/fd/" + std::to_string(captured));
    close(captured);
    return text;
}

class Steps : public testing::Test {
protected:
    void SetUp() override { clear(); }

    static void clear() {
        test::faults = test::Faults();
        for (const char* const folder : {"/Library", "/Applications"}) {
            for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
                fs::remove_all(entry);
            }
        }
    }
};

TEST_F(Steps, ShowTheAlertForAnotherVersion) {
    for (const Step step : {&PreInstall, &PostInstall}) {
        XCodParamBlock block = makeBlock(AMBREL);
        block.version = 999;
        const std::string shown = standardErrorOf([&] { EXPECT_EQ(call(step, block), 0x80000001u); });
        EXPECT_THAT(shown,
                    testing::StartsWith("[alert] Note: Unable to set post install option keys.\n[alert] 1 OK\n"));
        EXPECT_THAT(shown, testing::EndsWith("\nStopAlert 5000\n")) << "the dialog's alert comes after the panel";
        EXPECT_FALSE(fs::exists(PREFERENCES));
    }
}

TEST_F(Steps, IgnoreANullBlock) {
    PreInstall(nullptr);
    PostInstall(nullptr);
    EXPECT_FALSE(fs::exists(PREFERENCES));
}

struct StatusCase {
    const char* what;
    std::string content;
    test::Faults faults;
    const char* updater;
};

TEST_F(Steps, ReadAStatusFileThatChangesOrFails) {
    const std::string on = "UpdatesEnabled" + std::string(2986, '\n');
    const char* const enabled = "{'UpdateInterval': 2}";
    const char* const disabled = "{'UpdateInterval': 0}";
    const StatusCase cases[] = {
        {"it grows between the two looks at its size", on, {{3, 3000}}, enabled},
        {"it grows by one byte", on, {{2999, 3000}}, enabled},
        {"it shrinks between them", on, {{3000, 14}}, enabled},
        {"it shrinks below the word", on, {{3000, 13}}, disabled},
        {"its size cannot be told", on, {{std::nullopt}}, disabled},
        {"it is cut off after them",
         "Updates",
         {{14}},
         "{'InstallStatus': 'Attempt to read 14 bytes, only read 7 bytes', 'UpdateInterval': 2}"},
        {"it cannot be closed", on, {{}, true}, "{'InstallStatus': 'Close failed', 'UpdateInterval': 2}"},
    };
    for (const StatusCase& c : cases) {
        SCOPED_TRACE(c.what);
        clear();
        test::writeFile(STATUS_FILE, c.content);
        test::faults = c.faults;
        const auto before = openFiles();
        runStep(&PostInstall);
        EXPECT_EQ(openFiles(), before);
        EXPECT_EQ(preferences("com.corvane.updater"), c.updater);
        EXPECT_EQ(preferences("com.corvane.audioplugins.Ambrel"), "{'Lang': 'fr'}");
        EXPECT_EQ(test::readFile(STATUS_FILE), c.content);
    }
}

TEST_F(Steps, LetAStatusFileOutThatNoMemoryHolds) {
    fs::create_directories(VENDOR_FOLDER);
    test::writeFile(STATUS_FILE, "UpdatesEnabled");
    const auto mostHeld =
        static_cast<long long>(std::min<unsigned long long>(std::vector<char>().max_size(), UINT_MAX));
    for (const long long size : {mostHeld, 0xFFFFFFFFll, 0x100000000ll, 0x10000000Ell, 5ll << 40}) {
        test::faults.statusFileSizes = {size};
        const auto before = openFiles();
        XCodParamBlock block = makeBlock(AMBREL);
        EXPECT_THROW(PostInstall(&block), std::bad_alloc) << size;
        EXPECT_EQ(openFiles(), before);
    }
    EXPECT_FALSE(fs::exists(PREFERENCES)) << "nothing that comes after the file is done";
    EXPECT_EQ(test::run({"getfattr", "--dump", VENDOR_FOLDER}).out, "");
}

TEST_F(Steps, GiveEverythingBackWhenMemoryRunsOut) {
    test::writeFile(STATUS_FILE, "UpdatesEnabled");
    for (const Step step : {&PreInstall, &PostInstall}) {
        runStep(step);  // what is made once stays
        const auto before = openFiles();
        test::exhaustMemory([step] { runStep(step); }, [before] { EXPECT_EQ(openFiles(), before); });
        EXPECT_EQ(openFiles(), before);
    }
    EXPECT_EQ(preferences("com.corvane.audioplugins.Ambrel"), "{'Lang': 'fr'}");
}

TEST_F(Steps, StoreLaterWhatCouldNotBeStored) {
    test::writeFile(PREFERENCES, "in the way");
    EXPECT_THAT(standardErrorOf([] { runStep(&PreInstall); }), testing::HasSubstr("/Library/Preferences"));
    fs::remove(PREFERENCES);
    runStep(&PostInstall);
    EXPECT_EQ(preferences("com.corvane.updater"),
              "{'InstalledProducts/Ambrel/CurrentVersion': '1.00', 'UpdateInterval': 2}");
}

TEST_F(Steps, ChangeTwoFinderFlagsAndNothingElse) {
    const std::string tail = "0102030405060708090a0b0c0d0e0f10";
    struct FlagsCase {
        std::string before, folderAfter, iconAfter;
    };
    const FlagsCase cases[] = {
        {"", "0x00000000000000000400000000000000" + std::string(32, '0'),
         "0x00000000000000004000000000000000" + std::string(32, '0')},
        {"0x1122334455667788ffff99aabbccddee" + tail, "0x1122334455667788bfff99aabbccddee" + tail,
         "0x1122334455667788fbff99aabbccddee" + tail},
        {"0x11223344", "0x11223344", "0x11223344"},  // no Finder information: it is left alone
    };
    const auto finderInfo = [&](const char* path) {
        std::string dump =
            test::run({"getfattr", "--encoding=hex", "--name=user.com.apple.FinderInfo", "--dump", path}).out;
        const std::size_t value = dump.find('=');
        return value == std::string::npos ? "" : dump.substr(value + 1, dump.find('\n', value) - value - 1);
    };
    for (const FlagsCase& c : cases) {
        clear();
        test::writeFile(ICON_FILE, "");
        for (const char* const path : {VENDOR_FOLDER, ICON_FILE}) {
            if (!c.before.empty()) {
                test::run({"setfattr", "--name=user.com.apple.FinderInfo", "--value=" + c.before, path});
            }
        }
        runStep(&PostInstall, 0);  // an unknown product: the flags are set all the same
        EXPECT_EQ(finderInfo(VENDOR_FOLDER), c.folderAfter);
        EXPECT_EQ(finderInfo(ICON_FILE), c.iconAfter);
        EXPECT_FALSE(fs::exists(PREFERENCES));
    }
}

TEST(Catalogue, TakesEveryOtherLanguageForEnglish) {
    for (const std::int32_t code : {INT_MIN, -1, 0, 4, 5, 7, 10, 12, INT_MAX}) {
        EXPECT_EQ(test::text(languageText(code)), "en") << code;
    }
}

}  // namespace
