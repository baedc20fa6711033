#include "CvBase/Util/Dir.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/CvBase/Util/FileTestSupport.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using test::expectFolderFailure;
using test::writeFile;
using Util::Dir;
using Util::Exception::FileIO;

Dir dirAt(const std::string& path) {
    return Dir(FolderPath(path.c_str(), false));
}

/// Works in a folder of its own, with HOME to change.
class DirTest : public testing::Test {
protected:
    DirTest() : before_(fs::current_path()), home_(std::getenv("HOME") ? std::getenv("HOME") : "/") {
        fs::current_path(temp_.path());
    }
    ~DirTest() override {
        fs::current_path(before_);
        setenv("HOME", home_.c_str(), 1);
    }

    const test::TempDir temp_;

private:
    const fs::path before_;
    const std::string home_;
};

TEST_F(DirTest, OnlyAFolderExists) {
    writeFile(temp_ / "file", "x");
    fs::create_directory_symlink(temp_.path(), temp_ / "link");
    fs::create_symlink(temp_ / "nowhere", temp_ / "dangling");
    EXPECT_TRUE(dirAt("/").Exists());
    EXPECT_TRUE(dirAt(temp_.path()).Exists());
    EXPECT_TRUE(dirAt(temp_ / "link").Exists());
    EXPECT_FALSE(dirAt(temp_ / "file").Exists());
    EXPECT_FALSE(dirAt(temp_ / "dangling").Exists());
    EXPECT_FALSE(dirAt(temp_ / "missing").Exists());
    EXPECT_FALSE(Dir().Exists());

    Dir dir;
    dir.SetPath(FolderPath(temp_.path().c_str(), false));
    EXPECT_TRUE(dir.Exists());
}

TEST_F(DirTest, CreatesAFolder) {
    const mode_t umaskBefore = umask(0);
    dirAt(temp_ / "a").Create(false);
    dirAt(temp_ / "b/c\\d//e").Create(true);
    umask(027);
    dirAt(temp_ / "masked").Create(true);
    umask(umaskBefore);
    for (const char* made : {"a", "b", "b/c", "b/c/d", "b/c/d/e"}) {
        EXPECT_EQ(fs::status(temp_ / made).permissions(), fs::perms(0755)) << made;
    }
    EXPECT_EQ(fs::status(temp_ / "masked").permissions(), fs::perms(0750));
    dirAt(temp_ / "a").Create(false);
    dirAt(temp_ / "a").Create(true);
}

TEST_F(DirTest, CreatingFails) {
    expectFolderFailure([&] { dirAt(temp_ / "no/a").Create(false); }, "mkdir() failed with -1/2", FileIO::WriteError,
                        118, temp_ / "no/a/");
    writeFile(temp_ / "made/file", "x");
    expectFolderFailure([&] { dirAt(temp_ / "made/file").Create(false); }, "mkdir() failed with -1/17",
                        FileIO::WriteError, 118, temp_ / "made/file/");
    expectFolderFailure([&] { dirAt(temp_ / "made/file").Create(true); }, "mkdir() failed with -1/17",
                        FileIO::WriteError, 105, temp_ / "made/file/");

    fs::create_symlink(temp_ / "nowhere", temp_ / "dangling");
    expectFolderFailure([&] { dirAt(temp_ / "new/../dangling/x").Create(true); }, "mkdir() failed with -1/17",
                        FileIO::WriteError, 105, temp_ / "new/../dangling/x/");
    const std::string longName(300, 'n');
    expectFolderFailure([&] { dirAt(temp_ / ("a/b/" + longName)).Create(true); }, "mkdir() failed with -1/36",
                        FileIO::WriteError, 105, temp_ / ("a/b/" + longName + "/"));
    EXPECT_TRUE(fs::is_directory(temp_ / "a/b")) << "what was made before the failure stays";
}

TEST_F(DirTest, CreatingARelativeTextWithItsParentsDoesNothing) {
    dirAt("/../relative/path/").Create(true);
    EXPECT_FALSE(fs::exists("relative"));
    setenv("HOME", "relative", 1);
    dirAt("~/path").Create(true);
    EXPECT_FALSE(fs::exists("relative"));
    dirAt("/../relative").Create(false);
    EXPECT_TRUE(fs::is_directory("relative")) << "without its parents it is made in the working folder";
}

TEST_F(DirTest, ATildeInTheFoldedTextIsAnOrdinaryName) {
    setenv("HOME", "~", 1);
    fs::create_directory("~");
    dirAt("~/a").Create(true);
    EXPECT_TRUE(fs::is_directory("~/a"));
}

TEST_F(DirTest, RemovesAnEmptyFolder) {
    fs::create_directory(temp_ / "a");
    dirAt(temp_ / "a").Remove();
    EXPECT_FALSE(fs::exists(temp_ / "a"));
    dirAt(temp_ / "a").Remove();

    writeFile(temp_ / "full/file", "x");
    expectFolderFailure([&] { dirAt(temp_ / "full").Remove(); }, "rmdir() failed", FileIO::RemoveError, 135,
                        temp_ / "full/");
    dirAt(temp_ / "full/file").Remove();
    EXPECT_TRUE(fs::exists(temp_ / "full/file")) << "a file is no folder";
    fs::create_directory(temp_ / "empty");
    fs::create_directory_symlink(temp_ / "empty", temp_ / "link");
    expectFolderFailure([&] { dirAt(temp_ / "link").Remove(); }, "rmdir() failed", FileIO::RemoveError, 135,
                        temp_ / "link/");
    EXPECT_TRUE(fs::exists(temp_ / "empty"));
}

TEST_F(DirTest, Times) {
    Dir dir = dirAt(temp_.path());
    dir.SetTime({1000000001, -2});
    struct stat status {};
    ASSERT_EQ(stat(temp_.path().c_str(), &status), 0);
    EXPECT_EQ(status.st_atim.tv_sec, 1000000001);
    EXPECT_EQ(status.st_mtim.tv_sec, -2);
    EXPECT_EQ(status.st_mtim.tv_nsec, 0);
    Util::FileTime time;
    dir.GetTime(&time);
    EXPECT_EQ(time.accessTime, 1000000001);
    EXPECT_EQ(time.modificationTime, -2);

    Dir missing = dirAt(temp_ / "missing");
    expectFolderFailure([&] { missing.GetTime(&time); }, "Error getting folder time", FileIO::UnexpectedError, 171,
                        temp_ / "missing/");
    expectFolderFailure([&] { missing.SetTime(time); }, "Error setting folder time", FileIO::UnexpectedError, 158,
                        temp_ / "missing/");
    EXPECT_EQ(time.modificationTime, -2);
}

TEST_F(DirTest, FreeSpaceIsASigned32BitProduct) {
    Dir::DirInfo info;
    info.freeBytes = 77;
    EXPECT_FALSE(dirAt(temp_ / "missing").GetDirInfo(info));
    EXPECT_EQ(info.freeBytes, 77);

    struct statfs first {
    }, second{};
    do {  // until nobody writes to the volume meanwhile
        ASSERT_EQ(statfs(temp_.path().c_str(), &first), 0);
        ASSERT_TRUE(dirAt(temp_.path()).GetDirInfo(info));
        ASSERT_EQ(statfs(temp_.path().c_str(), &second), 0);
    } while (first.f_bavail != second.f_bavail);
    const std::uint64_t bytes = std::uint64_t{first.f_bavail} * static_cast<std::uint64_t>(first.f_bsize);
    const std::uint64_t low = bytes % (std::uint64_t{1} << 32);
    const bool isNegative = low >= std::uint64_t{1} << 31;
    EXPECT_EQ(info.freeBytes, static_cast<long long>(low) - (isNegative ? 1LL << 32 : 0));
}

TEST_F(DirTest, NoPathIsNoFolderAndNotTheRoot) {
    Dir none;
    Util::FileTime time;
    Dir::DirInfo info;
    std::vector<String> names{"left over"};
    expectFolderFailure([&] { none.Create(false); }, "mkdir() failed with -1/2", FileIO::WriteError, 118, "");
    none.Create(true);
    none.Remove();
    expectFolderFailure([&] { none.GetTime(&time); }, "Error getting folder time", FileIO::UnexpectedError, 171, "");
    expectFolderFailure([&] { none.SetTime(time); }, "Error setting folder time", FileIO::UnexpectedError, 158, "");
    EXPECT_FALSE(none.GetDirInfo(info));
    none.GetFoldernames(names, "", false);
    EXPECT_TRUE(names.empty());
    Dir::GetFilenames("", names, "", false, true);
    EXPECT_TRUE(names.empty());
}

}  // namespace
