#include <Carbon/Files.h>
#include <sys/xattr.h>

#include "platform/StoreFailures.h"
#include "tests/support/Test.h"

namespace {

using namespace test;

OSStatus makeRef(const std::string& path, FSRef& ref, OptionBits options = kFSPathMakeRefDefaultOptions,
                 Boolean* isDirectory = nullptr) {
    return FSPathMakeRefWithOptions(reinterpret_cast<const UInt8*>(path.c_str()), options, &ref, isDirectory);
}

FSRef refTo(const std::string& path) {
    FSRef ref{};
    EXPECT_EQ(makeRef(path, ref), noErr) << path;
    return ref;
}

OSErr getInfo(const FSRef& ref, FSCatalogInfo& info) {
    return FSGetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info, nullptr, nullptr, nullptr);
}

OSErr setInfo(const FSRef& ref, const FSCatalogInfo& info) {
    return FSSetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info);
}

constexpr const char* ATTRIBUTE = "user.com.apple.FinderInfo";

/// The bytes of the attribute; empty when there is none.
std::string attribute(const std::string& path) {
    char bytes[4096];
    const ssize_t size = getxattr(path.c_str(), ATTRIBUTE, bytes, sizeof bytes);
    return std::string(bytes, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
}

/// The fault that is on record for the object.
std::string recorded(const std::string& path) {
    for (const cv::StoreFailure& failure : cv::storeFailures()) {
        if (failure.what == path) {
            return (failure.wasToBeStored ? "store: " : "look: ") + failure.reason;
        }
    }
    return "";
}

/// A folder with one file that holds "x".
class Files : public testing::Test {
protected:
    Files() { writeFile(file_, "x"); }

    const TempDir folder_;
    const std::string file_ = folder_ / "file";
};

using FSPathMakeRefTest = Files;
using FinderInfoTest = Files;
using FSExchangeObjectsTest = Files;

TEST_F(FSPathMakeRefTest, FindsTheObjectItself) {
    const std::string real = fs::canonical(folder_.path());
    writeFile(folder_ / "sub/file", "x");
    fs::create_symlink("file", folder_ / "sub/link");
    fs::create_directory_symlink("sub", folder_ / "way");
    fs::create_symlink("nowhere", folder_ / "dangling");
    constexpr OptionBits FOLLOW = kFSPathMakeRefDefaultOptions, DO_NOT = kFSPathMakeRefDoNotFollowLeafSymlink;
    // clang-format off
    const struct { OptionBits options; std::string path, found; } rows[] = {
        {FOLLOW, "/sub/file///", "/sub/file"}, {FOLLOW, "//sub/./../sub//file", "/sub/file"},
        {FOLLOW, "/way/link", "/sub/file"}, {FOLLOW, "/way", "/sub"},
        {DO_NOT, "/way/link/", "/sub/link"}, {DO_NOT, "/way", "/way"}, {DO_NOT, "/dangling", "/dangling"},
        {DO_NOT, "/way/.", "/sub"}, {DO_NOT, "/sub/..", ""},
    };
    // clang-format on
    for (const auto& [options, path, found] : rows) {
        FSRef ref{};
        Boolean isDirectory = 9;
        ASSERT_EQ(makeRef(folder_.path() + path, ref, options, &isDirectory), noErr) << path;
        EXPECT_EQ(ref.path, real + found) << path;
        EXPECT_EQ(isDirectory, fs::symlink_status(ref.path).type() == fs::file_type::directory) << path;
    }
    for (const char* root : {"/", "///", "/proc/.."}) {
        EXPECT_STREQ(refTo(root).path, "/");
    }
}

TEST_F(FSPathMakeRefTest, TellsWhyThereIsNoObject) {
    fs::create_symlink("nowhere", folder_ / "dangling");
    fs::create_symlink("loop", folder_ / "loop");
    const std::string& here = folder_.path();
    const std::string longName = here + "/" + std::string(256, 'n');
    // clang-format off
    const struct { std::string path; OSStatus error; const char* recorded; } rows[] = {
        {here + "/missing", fnfErr, ""}, {here + "/missing/file", dirNFErr, ""}, {here + "/file/inside", dirNFErr, ""},
        {here + "/dangling", fnfErr, ""}, {here + "/dangling/file", dirNFErr, ""},
        {here + "/loop", ioErr, "look: Too many levels of symbolic links"},
        {longName, bdNamErr, "look: File name too long"}, {"", paramErr, ""}, {"file", paramErr, ""},
    };
    // clang-format on
    for (const auto& [path, error, reason] : rows) {
        FSRef ref{1, 2, "untouched"};
        Boolean isDirectory = 9;
        EXPECT_EQ(makeRef(path, ref, 0, &isDirectory), error) << path;
        EXPECT_STREQ(ref.path, "untouched");
        EXPECT_EQ(isDirectory, 9);
        EXPECT_EQ(recorded(path), reason) << path;
    }
    FSRef ref;
    EXPECT_EQ(makeRef(here, ref, 2), paramErr) << "an unknown option";
    EXPECT_EQ(FSPathMakeRef(nullptr, &ref, nullptr), paramErr);
}

TEST_F(FinderInfoTest, IsZeroWhereNoneCanBeStored) {
    FSCatalogInfo info;
    std::memset(&info, 0xA5, sizeof info);
    EXPECT_EQ(getInfo(refTo("/proc/version"), info), noErr);
    EXPECT_THAT(info.finderInfo, testing::Each(0));
    EXPECT_EQ(setInfo(refTo("/proc/self/comm"), info), errFSUnknownCall);
    EXPECT_EQ(FSGetCatalogInfo(nullptr, 0, nullptr, nullptr, nullptr, nullptr), paramErr);
    const FSRef ref = refTo("/");
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoFinderInfo, nullptr, nullptr, nullptr, nullptr), paramErr);
    EXPECT_EQ(FSGetCatalogInfo(&ref, 0x1000, &info, nullptr, nullptr, nullptr), paramErr);
}

/// What became of the way to storing an object's Finder information: who fails on it is in the record, once.
TEST_F(FinderInfoTest, OfAWrongSizeIsRecordedAndStays) {
    const std::string reason = "its Finder information has a size other than 32 bytes";
    const FSRef ref = refTo(file_);
    for (const std::size_t size : {0U, 31U, 33U, 2000U}) {
        const std::string value(size, '5');
        ASSERT_EQ(setxattr(file_.c_str(), ATTRIBUTE, value.data(), size, 0), 0);
        FSCatalogInfo info;
        std::memset(&info, 0xA5, sizeof info);
        EXPECT_EQ(getInfo(ref, info), ioErr) << size;
        EXPECT_THAT(info.finderInfo, testing::Each(0xA5)) << size;
        EXPECT_EQ(recorded(ref.path), "look: " + reason);
        EXPECT_EQ(setInfo(ref, info), ioErr) << size;
        EXPECT_EQ(attribute(file_), value);
        EXPECT_EQ(getInfo(ref, info), ioErr);
        EXPECT_EQ(recorded(ref.path), "store: " + reason) << "a look says no more than the storing did";
        ASSERT_EQ(removexattr(file_.c_str(), ATTRIBUTE), 0);
        EXPECT_EQ(getInfo(ref, info), noErr);
        EXPECT_EQ(recorded(ref.path), "store: " + reason);
        EXPECT_EQ(setInfo(ref, info), noErr);
        EXPECT_EQ(recorded(ref.path), "");
    }
}

TEST_F(FinderInfoTest, NeverGoesToAnotherObjectOfTheSamePath) {
    const auto refused = [](const FSRef& ref) {
        FSCatalogInfo info{};
        return getInfo(ref, info) == errFSBadFSRef && setInfo(ref, info) == errFSBadFSRef;
    };
    const FSRef ref = refTo(file_);
    EXPECT_EQ(FSGetCatalogInfo(&ref, 0, nullptr, nullptr, nullptr, nullptr), noErr);
    fs::rename(file_, folder_ / "moved");
    EXPECT_TRUE(refused(ref)) << "missing";
    writeFile(file_, "another");
    EXPECT_TRUE(refused(ref)) << "another file";
    fs::remove(file_);
    fs::create_symlink("moved", file_);
    EXPECT_TRUE(refused(ref)) << "a link to the very object";
    EXPECT_EQ(attribute(folder_ / "moved"), "");
    FSRef made{};
    EXPECT_TRUE(refused(made)) << "zeros";
    std::memset(made.path, '/', sizeof made.path);
    EXPECT_TRUE(refused(made)) << "no end";
}

TEST_F(FSExchangeObjectsTest, SwapsTwoFilesAndNothingElse) {
    writeFile(folder_ / "sub/b", "b");
    const FSRef file = refTo(file_), other = refTo(folder_ / "sub/b");
    ASSERT_EQ(FSExchangeObjects(&file, &other), noErr);
    EXPECT_EQ(readFile(file_), "b");
    EXPECT_EQ(readFile(folder_ / "sub/b"), "x");
    EXPECT_EQ(FSExchangeObjects(&file, &other), errFSBadFSRef) << "they are other objects now";

    fs::create_symlink("sub/b", folder_ / "link");
    fs::create_hard_link(file_, folder_ / "twin");
    FSRef link;
    ASSERT_EQ(makeRef(folder_ / "link", link, kFSPathMakeRefDoNotFollowLeafSymlink), noErr);
    const FSRef ref = refTo(file_), twin = refTo(folder_ / "twin"), folder = refTo(folder_.path());
    const FSRef special = refTo("/proc/version");
    const std::pair<const FSRef*, OSErr> rows[] = {
        {&folder, -1302}, {&link, notAFileErr}, {&special, diffVolErr}, {nullptr, paramErr}, {&twin, noErr}};
    for (const auto& [refused, error] : rows) {
        EXPECT_EQ(FSExchangeObjects(&ref, refused), error);
        EXPECT_EQ(FSExchangeObjects(refused, &ref), error);
    }
    EXPECT_EQ(readFile(file_), "b");
    EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
}

}  // namespace
