#include <Carbon/Files.h>
#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

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

template <typename Layout>
Layout as(const FSCatalogInfo& info) {
    Layout layout;
    std::memcpy(&layout, info.finderInfo, sizeof layout);
    return layout;
}

template <typename Layout>
FSCatalogInfo infoOf(const Layout& layout) {
    FSCatalogInfo info{};
    std::memcpy(info.finderInfo, &layout, sizeof layout);
    return info;
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

TEST(FSPathMakeRef, FindsTheObjectItself) {
    const test::TempDir folder;
    const std::string real = fs::canonical(folder.path());
    test::writeFile(folder / "sub/file", "x");
    fs::create_symlink("file", folder / "sub/link");
    fs::create_directory_symlink("sub", folder / "way");
    fs::create_symlink("nowhere", folder / "dangling");

    constexpr OptionBits LINK = kFSPathMakeRefDoNotFollowLeafSymlink;
    const struct {
        const char* path;
        const char* found;
        OptionBits options;
        bool isFolder;
    } cases[] = {
        {"/sub/file", "/sub/file", 0, false},
        {"/sub/file///", "/sub/file", 0, false},
        {"//sub/./../sub//file", "/sub/file", 0, false},
        {"/sub", "/sub", 0, true},
        {"/sub/", "/sub", 0, true},
        {"/way/link", "/sub/file", 0, false},
        {"/way/link/", "/sub/file", 0, false},
        {"/way", "/sub", 0, true},
        {"/way/link", "/sub/link", LINK, false},
        {"/way/link/", "/sub/link", LINK, false},
        {"/way", "/way", LINK, false},
        {"/way/file", "/sub/file", LINK, false},
        {"/dangling", "/dangling", LINK, false},
        {"/way/.", "/sub", LINK, true},
        {"/sub/..", "", LINK, true},
    };
    for (const auto& one : cases) {
        FSRef ref{};
        Boolean isDirectory = 9;
        ASSERT_EQ(makeRef(folder.path() + one.path, ref, one.options, &isDirectory), noErr) << one.path;
        EXPECT_EQ(ref.path, real + one.found) << one.path;
        EXPECT_EQ(isDirectory, one.isFolder) << one.path;
    }
    EXPECT_STREQ(refTo("/").path, "/");
    EXPECT_STREQ(refTo("///").path, "/");
    EXPECT_STREQ(refTo("/proc/..").path, "/");
}

TEST(FSPathMakeRef, TellsWhyThereIsNoObject) {
    const test::TempDir folder;
    test::writeFile(folder / "file", "x");
    fs::create_symlink("nowhere", folder / "dangling");
    fs::create_symlink("loop", folder / "loop");
    const std::string& here = folder.path();
    const struct {
        std::string path;
        OptionBits options;
        OSStatus error;
    } cases[] = {
        {here + "/missing", 0, fnfErr},
        {here + "/missing/file", 0, dirNFErr},
        {here + "/file/inside", 0, dirNFErr},
        {here + "/dangling", 0, fnfErr},
        {here + "/dangling/file", 0, dirNFErr},
        {here + "/loop", 0, ioErr},
        {here + "/" + std::string(256, 'n'), 0, bdNamErr},
        {"", 0, paramErr},
        {"file", 0, paramErr},
        {here, 2, paramErr},
    };
    for (const auto& one : cases) {
        FSRef ref{1, 2, "untouched"};
        Boolean isDirectory = 9;
        EXPECT_EQ(makeRef(one.path, ref, one.options, &isDirectory), one.error) << one.path;
        EXPECT_STREQ(ref.path, "untouched");
        EXPECT_EQ(isDirectory, 9);
    }
    FSRef ref;
    EXPECT_EQ(FSPathMakeRef(nullptr, &ref, nullptr), paramErr);
    EXPECT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>("/"), nullptr, nullptr), paramErr);
}

TEST(FinderInfo, IsZeroWhereNoneIsStored) {
    const test::TempDir folder;
    test::writeFile(folder / "file", "x");
    for (const std::string& path :
         {folder / "file", folder.path(), std::string("/proc/version"), std::string("/proc")}) {
        FSCatalogInfo info;
        std::memset(&info, 0xA5, sizeof info);
        EXPECT_EQ(getInfo(refTo(path), info), noErr) << path;
        EXPECT_THAT(info.finderInfo, testing::Each(0)) << path;
    }
}

TEST(FinderInfo, IsBigEndianOnTheDiskAndTheProcessorsInMemory) {
    const test::TempDir folder;
    const std::string file = folder / "file";
    test::writeFile(file, "x");
    setAttribute(file, "5445585441424344ffff000102030405" + EXTENDED);
    setAttribute(folder.path(), "0102030405060708bfff00010203f405" + EXTENDED);

    FSCatalogInfo info;
    ASSERT_EQ(getInfo(refTo(file), info), noErr);
    auto fileInfo = as<FileInfo>(info);
    EXPECT_EQ(fileInfo.fileType, CV_FOUR_CHAR_CODE('T', 'E', 'X', 'T'));
    EXPECT_EQ(fileInfo.fileCreator, CV_FOUR_CHAR_CODE('A', 'B', 'C', 'D'));
    EXPECT_EQ(fileInfo.finderFlags, 0xFFFF);
    EXPECT_EQ(fileInfo.location.v, 1);
    EXPECT_EQ(fileInfo.location.h, 0x0203);
    EXPECT_EQ(fileInfo.reservedField, 0x0405);
    fileInfo.finderFlags = static_cast<UInt16>(fileInfo.finderFlags & ~kHasCustomIcon);
    fileInfo.fileType = CV_FOUR_CHAR_CODE('a', 'b', 'c', 'd');
    ASSERT_EQ(setInfo(refTo(file), infoOf(fileInfo)), noErr);
    EXPECT_EQ(attribute(file), "6162636441424344fbff000102030405" + EXTENDED);

    ASSERT_EQ(getInfo(refTo(folder.path()), info), noErr);
    auto folderInfo = as<FolderInfo>(info);
    EXPECT_EQ(folderInfo.windowBounds.top, 0x0102);
    EXPECT_EQ(folderInfo.windowBounds.right, 0x0708);
    EXPECT_EQ(folderInfo.finderFlags, 0xBFFF);
    EXPECT_EQ(folderInfo.location.h, 0x0203);
    EXPECT_EQ(folderInfo.reservedField, 0xF405);
    folderInfo.finderFlags = kIsInvisible;
    ASSERT_EQ(setInfo(refTo(folder.path()), infoOf(folderInfo)), noErr);
    EXPECT_EQ(attribute(folder.path()),
              "01020304050607084000"
              "00010203f405" +
                  EXTENDED);
}

TEST(FinderInfo, OfALinksTargetIsReachedThroughTheLink) {
    const test::TempDir folder;
    test::writeFile(folder / "Icon\r", "x");
    fs::create_symlink("Icon\r", folder / "link");
    FileInfo fileInfo{};
    fileInfo.finderFlags = kIsInvisible;
    ASSERT_EQ(setInfo(refTo(folder / "link"), infoOf(fileInfo)), noErr);
    EXPECT_EQ(attribute(folder / "Icon\r"), "0000000000000000400000000000000000000000000000000000000000000000");

    // A link of its own can carry none.
    FSRef link;
    FSCatalogInfo info{};
    ASSERT_EQ(makeRef(folder / "link", link, kFSPathMakeRefDoNotFollowLeafSymlink), noErr);
    EXPECT_EQ(getInfo(link, info), noErr);
    EXPECT_EQ(setInfo(link, info), afpAccessDenied);
}

TEST(FinderInfo, OfAWrongSizeIsAnErrorAndStays) {
    const test::TempDir folder;
    const std::string file = folder / "file";
    for (const std::size_t size : {0u, 1u, 16u, 31u, 33u, 64u, 2000u}) {
        fs::remove(file);
        test::writeFile(file, "x");
        std::string value;
        for (std::size_t i = 0; i < size; ++i) {
            value += "5a";
        }
        setAttribute(file, value);
        FSCatalogInfo info;
        std::memset(&info, 0xA5, sizeof info);
        EXPECT_EQ(getInfo(refTo(file), info), ioErr) << size;
        EXPECT_THAT(info.finderInfo, testing::Each(0xA5)) << size;
        EXPECT_EQ(setInfo(refTo(file), info), ioErr) << size;
        EXPECT_EQ(attribute(file), value);
    }
}

TEST(FinderInfo, NeedsTheRightAccess) {
    const test::TempDir folder;
    const std::string file = folder / "file";
    test::writeFile(file, "x");
    chmod(folder.path().c_str(), 0755);
    const FSRef ref = refTo(file);
    const auto refusesNobody = [&](mode_t mode, auto work) {
        chmod(file.c_str(), mode);
        return test::holdsForOrdinaryUser([&] { return work() == afpAccessDenied; });
    };
    FSCatalogInfo info{};
    EXPECT_TRUE(refusesNobody(0444, [&] { return setInfo(ref, info); }));
    EXPECT_TRUE(refusesNobody(0, [&] { return getInfo(ref, info); }));
    EXPECT_EQ(attribute(file), "");
    EXPECT_EQ(setInfo(refTo("/proc/self/comm"), info), errFSUnknownCall);
}

TEST(FinderInfo, StaysOnAReadOnlyVolume) {
    const test::TempDir folder;
    test::writeFile(folder / "file", "x");
    test::writeFile(folder / "other", "y");
    EXPECT_TRUE(test::holdsInACopy([&] {
        FSCatalogInfo info{};
        const bool ready = makeReadOnly(folder.path());
        const FSRef ref = refTo(folder / "file"), other = refTo(folder / "other");
        return ready && getInfo(ref, info) == noErr && setInfo(ref, info) == wPrErr &&
               FSExchangeObjects(&ref, &other) == wPrErr;
    }));
    EXPECT_EQ(test::readFile(folder / "file"), "x");
}

TEST(FinderInfo, NeverGoesToAnotherObjectOfTheSamePath) {
    const test::TempDir folder;
    const std::string path = folder / "object";
    const auto refused = [](const FSRef& ref) {
        FSCatalogInfo info{};
        return getInfo(ref, info) == errFSBadFSRef && setInfo(ref, info) == errFSBadFSRef &&
               FSGetCatalogInfo(&ref, 0, nullptr, nullptr, nullptr, nullptr) == errFSBadFSRef;
    };
    test::writeFile(path, "x");
    const FSRef ref = refTo(path);
    EXPECT_EQ(FSGetCatalogInfo(&ref, 0, nullptr, nullptr, nullptr, nullptr), noErr);

    fs::rename(path, folder / "moved");
    EXPECT_TRUE(refused(ref)) << "missing";
    test::writeFile(path, "another");
    EXPECT_TRUE(refused(ref)) << "another file";
    fs::remove(path);
    fs::create_symlink("moved", path);
    EXPECT_TRUE(refused(ref)) << "a link to the very object";
    fs::remove(path);
    fs::create_directory(path);
    EXPECT_TRUE(refused(ref)) << "a folder";
    EXPECT_EQ(attribute(folder / "moved"), "");

    FSRef made{};
    EXPECT_TRUE(refused(made)) << "zeros";
    std::memset(made.path, '/', sizeof made.path);
    EXPECT_TRUE(refused(made)) << "no end";
}

TEST(FinderInfo, RefusesWhatItDoesNotKnow) {
    const FSRef ref = refTo("/");
    FSRef parent;
    FSCatalogInfo info;
    EXPECT_EQ(FSGetCatalogInfo(nullptr, 0, nullptr, nullptr, nullptr, nullptr), paramErr);
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoFinderInfo, nullptr, nullptr, nullptr, nullptr), paramErr);
    EXPECT_EQ(FSGetCatalogInfo(&ref, 0x1000, &info, nullptr, nullptr, nullptr), paramErr);
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info, nullptr, nullptr, &parent), paramErr);
    EXPECT_EQ(FSSetCatalogInfo(&ref, 0x1000, &info), paramErr);
}

TEST(FSExchangeObjects, SwapsContentsAndIdentity) {
    const test::TempDir folder;
    const std::string a = folder / "a", b = folder / "sub/b";
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

TEST(FSExchangeObjects, MovesNothingWhenItCannot) {
    const test::TempDir folder, elsewhere;
    const std::string file = folder / "file";
    test::writeFile(file, "kept");
    test::writeFile(folder / "other", "other");
    fs::create_directory(folder / "folder");
    fs::create_symlink("other", folder / "link");
    fs::create_hard_link(file, folder / "twin");
    FSRef link;
    ASSERT_EQ(makeRef(folder / "link", link, kFSPathMakeRefDoNotFollowLeafSymlink), noErr);
    const FSRef ref = refTo(file), twin = refTo(folder / "twin"), subfolder = refTo(folder / "folder");
    const FSRef special = refTo("/proc/version");

    EXPECT_EQ(FSExchangeObjects(&ref, &subfolder), errFSNotAFile);
    EXPECT_EQ(FSExchangeObjects(&subfolder, &ref), errFSNotAFile);
    EXPECT_EQ(FSExchangeObjects(&ref, &link), errFSNotAFile);
    EXPECT_EQ(FSExchangeObjects(&ref, &special), diffVolErr);
    EXPECT_EQ(FSExchangeObjects(&ref, nullptr), paramErr);
    EXPECT_EQ(FSExchangeObjects(&ref, &ref), noErr);
    EXPECT_EQ(FSExchangeObjects(&ref, &twin), noErr);
    EXPECT_EQ(test::readFile(file), "kept");
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_TRUE(fs::is_directory(folder / "folder"));
}

}  // namespace
