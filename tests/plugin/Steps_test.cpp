// The two steps, called directly, in a private root: what they do when something goes wrong under them.

#include <Carbon/Carbon.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "CvBase/Mac/AutoreleasePool.h"
#include "plugin/Catalogue.h"
#include "plugin/Steps.h"
#include "tests/support/CFSupport.h"
#include "tests/support/Process.h"
#include "tests/support/StandardError.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* STATUS_FILE = "/Library/Application Support/Corvane/Updater/install_status.txt";
constexpr const char* PREFERENCES = "/Library/Preferences";
constexpr const char* VENDOR_FOLDER = "/Applications/Corvane";
constexpr const char* ICON_FILE = "/Applications/Corvane/Icon\r";
constexpr const char* FINDER_INFO = "user.com.apple.FinderInfo";
constexpr std::int32_t AMBREL = 5100;

/// The sizes that fstat tells for the install-status file, one a call and then the last one, instead of the real one; a
/// missing value lets the call fail.
using Sizes = std::vector<std::optional<long long>>;
Sizes statusFileSizes;

bool isStatusFile(int fd) {
    std::error_code error;
    return fs::read_symlink("/proc/self/fd/" + std::to_string(fd), error) == STATUS_FILE;
}

}  // namespace

// These stand in the place of the C library's and the port's functions of the same name for the code that is linked
// into this program.

extern "C" __attribute__((visibility("default"))) int fstat(int fd, struct stat* status) noexcept {
    const int result = fstatat(fd, "", status, AT_EMPTY_PATH);
    if (result != 0 || statusFileSizes.empty() || !isStatusFile(fd)) {
        return result;
    }
    const std::optional<long long> size = statusFileSizes.front();
    if (statusFileSizes.size() > 1) {
        statusFileSizes.erase(statusFileSizes.begin());
    }
    if (!size) {
        errno = EIO;
        return -1;
    }
    status->st_size = *size;
    return 0;
}

extern "C" __attribute__((visibility("default"))) DialogItemIndex StopAlert(SInt16 alertID, ModalFilterUPP) {
    std::fprintf(stderr, "StopAlert %d\n", alertID);
    return -1;
}

namespace {

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
    const cv::AutoreleasePool pool;
    step(&block);
    return block.resultFlags;
}

void runStep(Step step, std::int32_t product = AMBREL) {
    EXPECT_EQ(call(step, makeBlock(product)), 0x80000000u);
}

/// What python3's plistlib reads in a domain's preference file, as Python writes it.
std::string preferences(const std::string& domain) {
    const char* const script =
        "import plistlib, sys; d = plistlib.load(open(sys.argv[1], 'rb')); print({k: d[k] for k in sorted(d)}, end='')";
    return test::run({"python3", "-c", script, std::string(PREFERENCES) + "/" + domain + ".plist"}).out;
}

std::ptrdiff_t openFiles() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

class Steps : public testing::Test {
protected:
    void SetUp() override { clear(); }

    static void clear() {
        statusFileSizes.clear();
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
        const std::string shown = test::errorsOf([&] { EXPECT_EQ(call(step, block), 0x80000001u); });
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

TEST_F(Steps, ReadTheStatusFileWhateverItIs) {
    const std::string on = "UpdatesEnabled" + std::string(2986, '\n');
    const std::string enabled = "{'UpdateInterval': 2}";
    const std::string disabled = "{'UpdateInterval': 0}";
    const auto failed = [](const std::string& message) {
        return "{'InstallStatus': '" + message + "', 'UpdateInterval': 2}";
    };
    const struct {
        const char* what;
        std::string content;
        Sizes sizes;
        std::string updater;
    } cases[] = {
        {"it holds more than the word", "UpdatesEnabledAndMore", {}, enabled},
        {"it holds something else", "UpdatesDisabled", {}, disabled},
        {"it holds the word in lower case", "updatesenabled", {}, disabled},
        {"it holds 13 bytes of the word", "UpdatesEnable", {}, disabled},
        {"it is empty", "", {}, disabled},
        {"it begins with a byte order mark", "\xEF\xBB\xBFUpdatesEnabled", {}, disabled},
        {"it has a zero byte inside the word", std::string("Updates\0Enabled", 15), {}, disabled},
        {"it has a zero byte after the word", std::string("UpdatesEnabled\0\xFF", 16), {}, enabled},
        {"it is large", "UpdatesEnabled" + std::string(1 << 20, '\0'), {}, enabled},
        {"it grows between the two looks at its size", on, {3, 3000}, enabled},
        {"it grows by one byte", on, {2999, 3000}, enabled},
        {"it shrinks between them", on, {3000, 14}, enabled},
        {"it shrinks below the word", on, {3000, 13}, disabled},
        {"its size cannot be told", on, {std::nullopt}, disabled},
        {"it is cut off after them", "Updates", {14}, failed("Attempt to read 14 bytes, only read 7 bytes")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        clear();
        test::writeFile(STATUS_FILE, c.content);
        statusFileSizes = c.sizes;
        const auto before = openFiles();
        runStep(&PostInstall);
        EXPECT_EQ(openFiles(), before);
        EXPECT_EQ(preferences("com.corvane.updater"), c.updater);
        EXPECT_EQ(test::readFile(STATUS_FILE), c.content);
    }
    EXPECT_EQ(preferences("com.corvane.audioplugins.Ambrel"), "{'Lang': 'fr'}") << "after a failure, too";
}

TEST_F(Steps, LetAStatusFileOutThatNoMemoryHolds) {
    fs::create_directories(VENDOR_FOLDER);
    test::writeFile(STATUS_FILE, "UpdatesEnabled");
    const auto mostHeld =
        static_cast<long long>(std::min<unsigned long long>(std::vector<char>().max_size(), UINT_MAX));
    for (const long long size : {mostHeld, 0xFFFFFFFFll, 0x100000000ll, 0x10000000Ell, 5ll << 40}) {
        statusFileSizes = {size};
        const auto before = openFiles();
        XCodParamBlock block = makeBlock(AMBREL);
        EXPECT_THROW(PostInstall(&block), std::bad_alloc) << size;
        EXPECT_EQ(openFiles(), before);
    }
    EXPECT_FALSE(fs::exists(PREFERENCES)) << "nothing that comes after the file is done";
    EXPECT_EQ(getxattr(VENDOR_FOLDER, FINDER_INFO, nullptr, 0), -1);
}

TEST_F(Steps, ChangeTwoFinderFlagsAndNothingElse) {
    const std::string head(8, 'a'), tail(22, 'b'), zeros(22, '\0');
    const std::string cases[][3] = {
        // before, the vendor's folder afterwards, the icon file afterwards
        {"", std::string(8, '\0') + std::string("\4\0", 2) + zeros, std::string(8, '\0') + "\x40" + '\0' + zeros},
        {head + "\xFF\xFF" + tail, head + "\xBF\xFF" + tail, head + "\xFB\xFF" + tail},
        {"no Finder information", "no Finder information", "no Finder information"},
    };
    const auto finderInfo = [](const char* path) {
        char bytes[64];
        const ssize_t size = getxattr(path, FINDER_INFO, bytes, sizeof bytes);
        return size < 0 ? "" : std::string(bytes, static_cast<std::size_t>(size));
    };
    for (const auto& [before, folder, icon] : cases) {
        clear();
        test::writeFile(ICON_FILE, "");
        for (const char* const path : {VENDOR_FOLDER, ICON_FILE}) {
            if (!before.empty()) {
                ASSERT_EQ(setxattr(path, FINDER_INFO, before.data(), before.size(), 0), 0);
            }
        }
        runStep(&PostInstall, 0);  // an unknown product: the flags are set all the same
        EXPECT_EQ(finderInfo(VENDOR_FOLDER), folder);
        EXPECT_EQ(finderInfo(ICON_FILE), icon);
        EXPECT_FALSE(fs::exists(PREFERENCES));
    }
}

TEST(Catalogue, TakesEveryOtherLanguageForEnglish) {
    for (const std::int32_t code : {INT_MIN, -1, 0, 4, 5, 7, 10, 12, INT_MAX}) {
        EXPECT_EQ(test::text(languageText(code)), "en") << code;
    }
}

}  // namespace
