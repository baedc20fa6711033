#include <Carbon/Files.h>
#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace fs = std::filesystem;

namespace {

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

/// The Finder information of the object at `path`, as a FileInfo or a FolderInfo.
template <typename Layout>
Layout infoOf(const std::string& path) {
    FSCatalogInfo info;
    EXPECT_EQ(getInfo(refTo(path), info), noErr);
    Layout layout;
    std::memcpy(&layout, info.finderInfo, sizeof layout);
    return layout;
}

template <typename Layout>
OSErr setInfo(const std::string& path, const Layout& layout) {
    FSCatalogInfo info{};
    std::memcpy(info.finderInfo, &layout, sizeof layout);
    return setInfo(refTo(path), info);
}

/// The attribute in hexadecimal, as getfattr shows it; empty when there is none.
std::string attribute(const std::string& path) {
    const auto shown =
        test::run({"getfattr", "--absolute-names", "-h", "-e", "hex", "-n", "user.com.apple.FinderInfo", path});
    const std::size_t start = shown.out.find("=0x");
    return start == std::string::npos ? "" : shown.out.substr(start + 3, shown.out.find('\n', start) - start - 3);
}

void setAttribute(const std::string& path, const std::string& hex) {
    const auto result = test::run({"setfattr", "-n", "user.com.apple.FinderInfo", "-v", "0x" + hex, path});
    ASSERT_EQ(result.exitStatus, 0) << result.err;
}

/// Makes a folder a read-only volume, for this process alone.
bool makeReadOnly(const std::string& folder) {
    const char* path = folder.c_str();
    return unshare(geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) == 0 &&
           mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount(path, path, nullptr, MS_BIND, nullptr) == 0 &&
           mount(nullptr, path, nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY | MS_NOSUID | MS_NODEV, nullptr) == 0;
}

const std::string EXTENDED = "101112131415161718191a1b1c1d1e1f";

/// A folder with one file that holds "x".
class Files : public testing::Test {
protected:
    Files() { test::writeFile(file_, "x"); }

    const test::TempDir folder_;
    const std::string file_ = folder_ / "file";
};

using FSPathMakeRefTest = Files;
using FinderInfoTest = Files;
using FSExchangeObjectsTest = Files;

TEST_F(FSPathMakeRefTest, FindsTheObjectItself) {
    const std::string real = fs::canonical(folder_.path());
    test::writeFile(folder_ / "sub/file", "x");
    fs::create_symlink("file", folder_ / "sub/link");
    fs::create_directory_symlink("sub", folder_ / "way");
    fs::create_symlink("nowhere", folder_ / "dangling");

    using Paths = std::vector<std::pair<const char*, const char*>>;
    const auto expectFound = [&](OptionBits options, const Paths& cases) {
        for (const auto& [path, found] : cases) {
            FSRef ref{};
            Boolean isDirectory = 9;
            ASSERT_EQ(makeRef(folder_.path() + path, ref, options, &isDirectory), noErr) << path;
            EXPECT_EQ(ref.path, real + found) << path;
            EXPECT_EQ(isDirectory, fs::symlink_status(ref.path).type() == fs::file_type::directory) << path;
        }
    };
    expectFound(0, {{"/sub/file///", "/sub/file"},
                    {"//sub/./../sub//file", "/sub/file"},
                    {"/sub", "/sub"},
                    {"/way/link", "/sub/file"},
                    {"/way", "/sub"}});
    expectFound(kFSPathMakeRefDoNotFollowLeafSymlink, {{"/way/link/", "/sub/link"},
                                                       {"/way", "/way"},
                                                       {"/way/file", "/sub/file"},
                                                       {"/dangling", "/dangling"},
                                                       {"/way/.", "/sub"},
                                                       {"/sub/..", ""}});
    for (const char* root : {"/", "///", "/proc/.."}) {
        EXPECT_STREQ(refTo(root).path, "/");
    }
}

TEST_F(FSPathMakeRefTest, TellsWhyThereIsNoObject) {
    fs::create_symlink("nowhere", folder_ / "dangling");
    fs::create_symlink("loop", folder_ / "loop");
    const std::string& here = folder_.path();
    const std::pair<std::string, OSStatus> cases[] = {
        {here + "/missing", fnfErr},
        {here + "/missing/file", dirNFErr},
        {here + "/file/inside", dirNFErr},
        {here + "/dangling", fnfErr},
        {here + "/dangling/file", dirNFErr},
        {here + "/loop", ioErr},
        {here + "/" + std::string(256, 'n'), bdNamErr},
        {"", paramErr},
        {"file", paramErr},
    };
    for (const auto& [path, error] : cases) {
        FSRef ref{1, 2, "untouched"};
        Boolean isDirectory = 9;
        EXPECT_EQ(makeRef(path, ref, 0, &isDirectory), error) << path;
        EXPECT_STREQ(ref.path, "untouched");
        EXPECT_EQ(isDirectory, 9);
    }
    FSRef ref;
    EXPECT_EQ(makeRef(here, ref, 2), paramErr) << "an unknown option";
    EXPECT_EQ(FSPathMakeRef(nullptr, &ref, nullptr), paramErr);
    EXPECT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>("/"), nullptr, nullptr), paramErr);
}

TEST_F(FinderInfoTest, IsZeroWhereNoneCanBeStored) {
    FSCatalogInfo info;
    std::memset(&info, 0xA5, sizeof info);
    EXPECT_EQ(getInfo(refTo("/proc/version"), info), noErr);
    EXPECT_THAT(info.finderInfo, testing::Each(0));
    EXPECT_EQ(setInfo(refTo("/proc/self/comm"), info), errFSUnknownCall);
}

TEST_F(FinderInfoTest, IsBigEndianOnTheDiskAndTheProcessorsInMemory) {
    setAttribute(file_, "5445585441424344ffff000102030405" + EXTENDED);
    setAttribute(folder_.path(), "0102030405060708bfff00010203f405" + EXTENDED);

    auto fileInfo = infoOf<FileInfo>(file_);
    EXPECT_EQ(std::tuple(fileInfo.fileType, fileInfo.fileCreator, fileInfo.finderFlags, fileInfo.reservedField),
              std::tuple(CV_FOUR_CHAR_CODE('T', 'E', 'X', 'T'), CV_FOUR_CHAR_CODE('A', 'B', 'C', 'D'), 0xFFFF, 0x0405));
    EXPECT_EQ(std::tuple(fileInfo.location.v, fileInfo.location.h), std::tuple(1, 0x0203));
    fileInfo.finderFlags = static_cast<UInt16>(fileInfo.finderFlags & ~kHasCustomIcon);
    fileInfo.fileType = CV_FOUR_CHAR_CODE('a', 'b', 'c', 'd');
    EXPECT_EQ(setInfo(file_, fileInfo), noErr);
    EXPECT_EQ(attribute(file_), "6162636441424344fbff000102030405" + EXTENDED);

    auto folderInfo = infoOf<FolderInfo>(folder_.path());
    EXPECT_EQ(std::tuple(folderInfo.windowBounds.top, folderInfo.windowBounds.right, folderInfo.finderFlags,
                         folderInfo.location.h, folderInfo.reservedField),
              std::tuple(0x0102, 0x0708, 0xBFFF, 0x0203, 0xF405));
    folderInfo.finderFlags = kIsInvisible;
    EXPECT_EQ(setInfo(folder_.path(), folderInfo), noErr);
    EXPECT_EQ(attribute(folder_.path()), "0102030405060708400000010203f405" + EXTENDED);
}

TEST_F(FinderInfoTest, OfALinksTargetIsReachedThroughTheLink) {
    test::writeFile(folder_ / "Icon\r", "x");
    fs::create_symlink("Icon\r", folder_ / "link");
    FileInfo fileInfo{};
    fileInfo.finderFlags = kIsInvisible;
    ASSERT_EQ(setInfo(folder_ / "link", fileInfo), noErr);
    EXPECT_EQ(attribute(folder_ / "Icon\r"), "0000000000000000400" + std::string(45, '0'));

    FSRef link;
    FSCatalogInfo info{};
    ASSERT_EQ(makeRef(folder_ / "link", link, kFSPathMakeRefDoNotFollowLeafSymlink), noErr);
    EXPECT_EQ(setInfo(link, info), afpAccessDenied) << "a link of its own can carry none";
}

TEST_F(FinderInfoTest, OfAWrongSizeIsAnErrorAndStays) {
    for (const std::size_t size : {0u, 31u, 33u, 2000u}) {
        const std::string value(2 * size, '5');
        setAttribute(file_, value);
        FSCatalogInfo info;
        std::memset(&info, 0xA5, sizeof info);
        EXPECT_EQ(getInfo(refTo(file_), info), ioErr) << size;
        EXPECT_THAT(info.finderInfo, testing::Each(0xA5)) << size;
        EXPECT_EQ(setInfo(refTo(file_), info), ioErr) << size;
        EXPECT_EQ(attribute(file_), value);
    }
}

TEST_F(FinderInfoTest, NeedsTheRightAccess) {
    chmod(folder_.path().c_str(), 0755);
    const FSRef ref = refTo(file_);
    const auto refusesNobody = [&](mode_t mode, auto work) {
        chmod(file_.c_str(), mode);
        return test::holdsForOrdinaryUser([&] { return work() == afpAccessDenied; });
    };
    FSCatalogInfo info{};
    EXPECT_TRUE(refusesNobody(0444, [&] { return setInfo(ref, info); }));
    EXPECT_TRUE(refusesNobody(0, [&] { return getInfo(ref, info); }));
    EXPECT_EQ(attribute(file_), "");
}

TEST_F(FinderInfoTest, StaysOnAReadOnlyVolume) {
    test::writeFile(folder_ / "other", "y");
    EXPECT_TRUE(test::holdsInACopy([&] {
        FSCatalogInfo info{};
        const bool ready = makeReadOnly(folder_.path());
        const FSRef ref = refTo(file_), other = refTo(folder_ / "other");
        return ready && getInfo(ref, info) == noErr && setInfo(ref, info) == wPrErr &&
               FSExchangeObjects(&ref, &other) == wPrErr;
    }));
    EXPECT_EQ(test::readFile(file_), "x");
}

TEST_F(FinderInfoTest, NeverGoesToAnotherObjectOfTheSamePath) {
    const std::string path = folder_ / "object";
    const auto refused = [](const FSRef& ref) {
        FSCatalogInfo info{};
        return getInfo(ref, info) == errFSBadFSRef && setInfo(ref, info) == errFSBadFSRef &&
               FSGetCatalogInfo(&ref, 0, nullptr, nullptr, nullptr, nullptr) == errFSBadFSRef;
    };
    test::writeFile(path, "x");
    const FSRef ref = refTo(path);
    EXPECT_EQ(FSGetCatalogInfo(&ref, 0, nullptr, nullptr, nullptr, nullptr), noErr);

    fs::rename(path, folder_ / "moved");
    EXPECT_TRUE(refused(ref)) << "missing";
    test::writeFile(path, "another");
    EXPECT_TRUE(refused(ref)) << "another file";
    fs::remove(path);
    fs::create_symlink("moved", path);
    EXPECT_TRUE(refused(ref)) << "a link to the very object";
    fs::remove(path);
    fs::create_directory(path);
    EXPECT_TRUE(refused(ref)) << "a folder";
    EXPECT_EQ(attribute(folder_ / "moved"), "");

    FSRef made{};
    EXPECT_TRUE(refused(made)) << "zeros";
    std::memset(made.path, '/', sizeof made.path);
    EXPECT_TRUE(refused(made)) << "no end";
}

TEST_F(FinderInfoTest, RefusesWhatItDoesNotKnow) {
    const FSRef ref = refTo("/");
    FSRef parent;
    FSCatalogInfo info;
    EXPECT_EQ(FSGetCatalogInfo(nullptr, 0, nullptr, nullptr, nullptr, nullptr), paramErr);
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoFinderInfo, nullptr, nullptr, nullptr, nullptr), paramErr);
    EXPECT_EQ(FSGetCatalogInfo(&ref, 0x1000, &info, nullptr, nullptr, nullptr), paramErr);
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info, nullptr, nullptr, &parent), paramErr);
    EXPECT_EQ(FSSetCatalogInfo(&ref, 0x1000, &info), paramErr);
}

TEST_F(FSExchangeObjectsTest, SwapsContentsAndIdentity) {
    const std::string a = folder_ / "a", b = folder_ / "sub/b";
    test::writeFile(a, "contents of a");
    test::writeFile(b, "b");
    chmod(a.c_str(), 0600);
    chmod(b.c_str(), 0640);
    setAttribute(a, "61616161" + std::string(56, '0'));
    const FSRef refA = refTo(a), refB = refTo(b);
    ASSERT_EQ(FSExchangeObjects(&refA, &refB), noErr);

    EXPECT_EQ(test::readFile(a), "b");
    EXPECT_EQ(test::readFile(b), "contents of a");
    struct stat status {};
    ASSERT_EQ(stat(b.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    EXPECT_EQ(attribute(b), "61616161" + std::string(56, '0'));
    EXPECT_EQ(attribute(a), "");
    EXPECT_EQ(FSExchangeObjects(&refA, &refB), errFSBadFSRef);
    EXPECT_EQ(test::readFile(a), "b");
}

TEST_F(FSExchangeObjectsTest, MovesNothingWhenItCannot) {
    test::writeFile(file_, "kept");
    test::writeFile(folder_ / "other", "other");
    fs::create_directory(folder_ / "folder");
    fs::create_symlink("other", folder_ / "link");
    fs::create_hard_link(file_, folder_ / "twin");
    FSRef link;
    ASSERT_EQ(makeRef(folder_ / "link", link, kFSPathMakeRefDoNotFollowLeafSymlink), noErr);
    const FSRef ref = refTo(file_), twin = refTo(folder_ / "twin"), subfolder = refTo(folder_ / "folder");
    const FSRef special = refTo("/proc/version");

    const std::pair<const FSRef*, OSErr> cases[] = {
        {&subfolder, errFSNotAFile}, {&link, errFSNotAFile}, {&special, diffVolErr},
        {nullptr, paramErr},         {&ref, noErr},          {&twin, noErr}};
    for (const auto& [other, error] : cases) {
        EXPECT_EQ(FSExchangeObjects(&ref, other), error);
        EXPECT_EQ(FSExchangeObjects(other, &ref), error);
    }
    EXPECT_EQ(test::readFile(file_), "kept");
    EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
    EXPECT_TRUE(fs::is_directory(folder_ / "folder"));
}

}  // namespace
