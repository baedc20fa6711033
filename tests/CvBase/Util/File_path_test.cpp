// What is asked of, or done to, the file at the path, open or not.

#include <fcntl.h>
#include <sys/stat.h>

#include <initializer_list>

#include "tests/CvBase/Util/FileTestSupport.h"

namespace {

using namespace test;

class FilePathTest : public FileFixture {};

TEST_F(FilePathTest, ExistingAndAccess) {
    fs::create_symlink(temp_ / "nowhere", temp_ / "dangling");
    for (const std::string& path : {std::string(), path_, temp_ / "dangling", temp_ / std::string(300, 'n')}) {
        EXPECT_FALSE(File(pathOf(path)).Exists()) << path;
    }
    EXPECT_TRUE(File(pathOf(temp_.path())).Exists()) << "a folder exists too";

    writeFile(temp_ / "closed/file", "x");
    writeFile(path_, "x");
    fs::permissions(temp_.path(), fs::perms(0755));
    fs::permissions(path_, fs::perms(0444));
    fs::permissions(temp_ / "closed/file", fs::perms(0666));
    fs::permissions(temp_ / "closed", fs::perms(0));
    EXPECT_TRUE(holdsForOrdinaryUser([&] {
        const File inClosedFolder(pathOf(temp_ / "closed/file"));
        return file_.Exists() && file_.IsReadable() && !file_.IsWritable() && !inClosedFolder.Exists() &&
               !inClosedFolder.IsReadable();
    }));
    fs::permissions(temp_ / "closed", fs::perms(0755));
}

TEST_F(FilePathTest, RemovingClosesFirstAndTakesALinkItselfAndAnEmptyFolder) {
    const auto remove = [&] { file_.Remove(true); };
    file_.Open(File::Write);
    remove();
    EXPECT_FALSE(file_.IsOpen() || fs::exists(path_));
    file_.Remove(false);
    expectFailure(remove, "Remove failed", FileIO::RemoveError, ENOENT);

    writeFile(temp_ / "folder/file", "x");
    fs::create_symlink(temp_ / "folder/file", path_);
    remove();
    EXPECT_TRUE(fs::exists(temp_ / "folder/file"));
    setPath(temp_ / "folder");
    expectFailure(remove, "Remove failed", FileIO::RemoveError, ENOTEMPTY);
    fs::remove(temp_ / "folder/file");
    remove();
    EXPECT_FALSE(fs::exists(temp_ / "folder"));
}

TEST_F(FilePathTest, NothingIsRemovedWhenClosingFails) {
    fs::create_symlink("/dev/full", path_);
    file_.Open(File::Write);
    file_.WriteBlock("a", 1);
    expectFailure([&] { file_.Remove(false); }, "Close failed", FileIO::CloseError, ENOSPC);
    EXPECT_TRUE(fs::is_symlink(path_));
    EXPECT_FALSE(file_.IsOpen());
}

TEST_F(FilePathTest, PermissionBits) {
    writeFile(path_, "x");
    for (const unsigned short mode : std::initializer_list<unsigned short>{0640, 0, 04755, 01777}) {
        file_.SetMode(mode);
        EXPECT_EQ(static_cast<unsigned>(fs::status(path_).permissions()), mode);
    }
    fs::remove(path_);
    expectFailure([&] { file_.SetMode(0644); }, "Error modifying file permissions", FileIO::UnexpectedError, 0);
}

TEST_F(FilePathTest, TimesAreWholeSeconds) {
    writeFile(path_, "x");
    file_.SetTime({1000000001, 1000000002});
    struct stat status {};
    ASSERT_EQ(stat(path_.c_str(), &status), 0);
    EXPECT_EQ(status.st_atim.tv_sec, 1000000001);
    EXPECT_EQ(status.st_mtim.tv_sec, 1000000002);
    EXPECT_EQ(status.st_atim.tv_nsec + status.st_mtim.tv_nsec, 0);

    const std::array<timespec, 2> after2038{timespec{-5, 999999999},
                                            timespec{static_cast<time_t>((1LL << 31) + 5), 999999999}};
    ASSERT_EQ(utimensat(AT_FDCWD, path_.c_str(), after2038.data(), 0), 0);
    Util::FileTime time;
    file_.GetTime(&time);
    EXPECT_EQ(time.accessTime, -5);
    EXPECT_EQ(time.modificationTime, -2147483647 - 1 + 5);

    fs::remove(path_);
    expectFailure([&] { file_.GetTime(&time); }, "Error getting file time", FileIO::UnexpectedError, 0);
    EXPECT_EQ(time.accessTime, -5);
    expectFailure([&] { file_.SetTime(time); }, "Error setting file time", FileIO::UnexpectedError, 0);
}

}  // namespace
