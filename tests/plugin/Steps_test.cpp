// The two steps, called directly, in a private root: what they do when something goes wrong under them.

#include <Carbon/Carbon.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <new>

#include "CvBase/Mac/AutoreleasePool.h"
#include "plugin/Steps.h"
#include "tests/support/PreferenceFiles.h"
#include "tests/support/Test.h"

namespace {

using namespace test;

constexpr const char* STATUS_FILE = "/Library/Application Support/Corvane/Updater/install_status.txt";
constexpr const char* PREFERENCES = "/Library/Preferences";
constexpr const char* VENDOR_FOLDER = "/Applications/Corvane";
constexpr const char* ICON_FILE = "/Applications/Corvane/Icon\r";
constexpr const char* FINDER_INFO = "user.com.apple.FinderInfo";
constexpr std::int32_t AMBREL = 5100;

/// The sizes that fstat tells for the install-status file, one a call and then the last one, instead of the real one; a
/// missing value lets the call fail.
using Sizes = std::vector<std::optional<long long>>;
Sizes g_statusFileSizes;

bool isStatusFile(int fd) {
    std::error_code error;
    return fs::read_symlink("/proc/self/fd/" + std::to_string(fd), error) == STATUS_FILE;
}

}  // namespace

// These stand in the place of the C library's and the port's functions of the same name for the code that is linked
// into this program.

extern "C" __attribute__((visibility("default"))) int fstat(int fd, struct stat* status) noexcept {
    const int result = fstatat(fd, "", status, AT_EMPTY_PATH);
    if (result != 0 || g_statusFileSizes.empty() || !isStatusFile(fd)) {
        return result;
    }
    const std::optional<long long> size = g_statusFileSizes.front();
    if (g_statusFileSizes.size() > 1) {
        g_statusFileSizes.erase(g_statusFileSizes.begin());
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

/// What Python reads in a domain's preference file.
std::string preferences(const std::string& domain) {
    return python("p", std::string(PREFERENCES) + "/" + domain + ".plist");
}

class Steps : public testing::Test {
protected:
    void SetUp() override { clear(); }

    static void clear() {
        g_statusFileSizes.clear();
        for (const char* const folder : {"/Library", "/Applications"}) {
            for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
                fs::remove_all(entry);
            }
        }
    }
};

TEST_F(Steps, WarnOfAnotherBlockVersionAndIgnoreANullBlock) {
    for (const Step step : {&PreInstall, &PostInstall}) {
        step(nullptr);
        XCodParamBlock block = makeBlock(AMBREL);
        block.version = 999;
        const std::string shown = errorsOf([&] { EXPECT_EQ(call(step, block), 0x80000001u); });
        EXPECT_THAT(shown, StartsWith("[alert] Note: Unable to set post install option keys.\n[alert] 1 OK\n"));
        EXPECT_THAT(shown, testing::EndsWith("\nStopAlert 5000\n")) << "the dialog's alert comes after the panel";
    }
    EXPECT_FALSE(fs::exists(PREFERENCES));
}

TEST_F(Steps, ReadTheStatusFileWhateverItIs) {
    using std::string;
    const string on = "UpdatesEnabled" + string(2986, '\n'), large = "UpdatesEnabled" + string(1 << 20, '\0');
    const string ENABLED = "{'UpdateInterval': 2}", DISABLED = "{'UpdateInterval': 0}";
    const string CUT = "{'InstallStatus': 'Attempt to read 14 bytes, only read 7 bytes', 'UpdateInterval': 2}";
    // clang-format off
    const struct { const char* what; string content; Sizes sizes; string updater; } rows[] = {
        {"it holds more than the word", "UpdatesEnabledAndMore", {}, ENABLED},
        {"it holds something else", "UpdatesDisabled", {}, DISABLED},
        {"it holds the word in lower case", "updatesenabled", {}, DISABLED},
        {"it holds 13 bytes of the word", "UpdatesEnable", {}, DISABLED},
        {"it is empty", "", {}, DISABLED},
        {"it begins with a byte order mark", "\xEF\xBB\xBFUpdatesEnabled", {}, DISABLED},
        {"it has a zero byte inside the word", string("Updates\0Enabled", 15), {}, DISABLED},
        {"it has a zero byte after the word", string("UpdatesEnabled\0\xFF", 16), {}, ENABLED},
        {"it is large", large, {}, ENABLED},
        {"it grows between the two looks at its size", on, {3, 3000}, ENABLED},
        {"it grows by one byte", "UpdatesEnabled", {13, 14}, ENABLED},
        {"it shrinks between them", on, {3000, 14}, ENABLED},
        {"it shrinks below the word", on, {3000, 13}, DISABLED},
        {"its size cannot be told", on, {std::nullopt}, DISABLED},
        {"it is cut off after them", "Updates", {14}, CUT},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        clear();
        writeFile(STATUS_FILE, row.content);
        g_statusFileSizes = row.sizes;
        const auto before = openDescriptors();
        runStep(&PostInstall);
        EXPECT_EQ(openDescriptors(), before);
        EXPECT_EQ(preferences("com.corvane.updater"), row.updater);
    }
    EXPECT_EQ(preferences("com.corvane.audioplugins.Ambrel"), "{'Lang': 'fr'}") << "after a failure, too";
}

TEST_F(Steps, ThrowBadAllocForAStatusFileTooLargeForMemory) {
    fs::create_directories(VENDOR_FOLDER);
    writeFile(STATUS_FILE, "UpdatesEnabled");
    const auto mostHeld =
        static_cast<long long>(std::min<unsigned long long>(std::vector<char>().max_size(), UINT_MAX));
    for (const long long size : {mostHeld, 0xFFFFFFFFLL, 0x100000000LL, 0x10000000ELL, 5LL << 40}) {
        g_statusFileSizes = {size};
        const auto before = openDescriptors();
        XCodParamBlock block = makeBlock(AMBREL);
        EXPECT_THROW(PostInstall(&block), std::bad_alloc) << size;
        EXPECT_EQ(openDescriptors(), before);
    }
    EXPECT_FALSE(fs::exists(PREFERENCES)) << "nothing that comes after the file is done";
    EXPECT_EQ(getxattr(VENDOR_FOLDER, FINDER_INFO, nullptr, 0), -1);
}

TEST_F(Steps, ChangeTwoFinderFlagsAndNothingElse) {
    const std::string head(8, 'a'), tail(22, 'b');
    const std::string rows[][3] = {
        // before, the vendor's folder afterwards, the icon file afterwards
        {head + "\xFF\xFF" + tail, head + "\xBF\xFF" + tail, head + "\xFB\xFF" + tail},
        {"no Finder information", "no Finder information", "no Finder information"},
    };
    const auto finderInfo = [](const char* path) {
        std::string bytes(64, '\0');
        bytes.resize(static_cast<std::size_t>(getxattr(path, FINDER_INFO, bytes.data(), bytes.size())));
        return bytes;
    };
    for (const auto& [before, folder, icon] : rows) {
        writeFile(ICON_FILE, "");
        for (const char* const path : {VENDOR_FOLDER, ICON_FILE}) {
            ASSERT_EQ(setxattr(path, FINDER_INFO, before.data(), before.size(), 0), 0);
        }
        runStep(&PostInstall, 0);  // an unknown product: the flags are set all the same
        EXPECT_EQ(finderInfo(VENDOR_FOLDER), folder);
        EXPECT_EQ(finderInfo(ICON_FILE), icon);
        EXPECT_FALSE(fs::exists(PREFERENCES));
    }
}

}  // namespace
