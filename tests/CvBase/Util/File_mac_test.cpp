// Renaming, the Trash and the type code: what goes through the File Manager and the Finder.

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "CvBase/Util/File.h"
#include "tests/CvBase/Util/FileTestSupport.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using test::expectFileFailure;
using test::pathOf;
using test::readFile;
using test::writeFile;
using Util::File;
using Util::Exception::FileIO;

ino_t inodeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_ino;
}

bool isThere(const std::string& path) {
    return fs::symlink_status(path).type() != fs::file_type::not_found;
}

class FileRenameTest : public testing::Test {
protected:
    void rename() const { File::Rename(pathOf(from_), pathOf(to_)); }

    void expectRefused(int osError) const {
        expectFileFailure([this] { rename(); }, "Rename failed", FileIO::RenameError, osError, from_);
    }

    const test::TempDir temp_;
    const std::string from_ = temp_ / "from";
    const std::string to_ = temp_ / "to";
};

TEST_F(FileRenameTest, ToANewName) {
    writeFile(from_, "new");
    rename();
    EXPECT_EQ(readFile(to_), "new");
    EXPECT_FALSE(isThere(from_));
}

TEST_F(FileRenameTest, OntoAnExistingFile) {
    writeFile(from_, "new");
    writeFile(to_, "old");
    const ino_t inode = inodeOf(from_);
    rename();
    EXPECT_EQ(readFile(to_), "new");
    EXPECT_EQ(inodeOf(to_), inode);
    EXPECT_FALSE(isThere(from_));
}

TEST_F(FileRenameTest, WithoutASourceNothingHappens) {
    writeFile(to_, "old");
    expectRefused(ENOENT);
    EXPECT_EQ(readFile(to_), "old");
    expectFileFailure([this] { File::Rename(FilePath(), pathOf(to_)); }, "Rename failed", FileIO::RenameError, ENOENT,
                      "");
    expectFileFailure([this] { File::Rename(pathOf(to_), FilePath()); }, "Rename failed", FileIO::RenameError, ENOENT,
                      to_);
    EXPECT_EQ(readFile(to_), "old");
}

TEST_F(FileRenameTest, AFileAndAFolderDoNotReplaceEachOther) {
    writeFile(from_, "new");
    writeFile(to_ + "/inside", "old");
    expectRefused(EISDIR);
    EXPECT_EQ(readFile(from_), "new");
    EXPECT_EQ(readFile(to_ + "/inside"), "old");
    expectFileFailure([this] { File::Rename(pathOf(to_), pathOf(from_)); }, "Rename failed", FileIO::RenameError,
                      ENOTDIR, to_);
    EXPECT_EQ(readFile(to_ + "/inside"), "old");
}

TEST_F(FileRenameTest, AFolderGetsAnotherName) {
    writeFile(from_ + "/inside", "x");
    rename();
    EXPECT_EQ(readFile(to_ + "/inside"), "x");
    EXPECT_FALSE(isThere(from_));
}

TEST_F(FileRenameTest, AcrossVolumesBothFilesStay) {
    const std::string elsewhere = "/dev/shm/cvbase-rename-test-" + std::to_string(getpid());
    struct stat here {
    }, there{};
    ASSERT_EQ(stat(temp_.path().c_str(), &here), 0);
    ASSERT_EQ(stat("/dev/shm", &there), 0);
    ASSERT_NE(here.st_dev, there.st_dev) << "this test needs two volumes";
    writeFile(from_, "new");
    writeFile(elsewhere, "old");
    const auto rename = [&] { File::Rename(pathOf(from_), pathOf(elsewhere)); };
    expectFileFailure(rename, "Rename failed", FileIO::RenameError, EXDEV, from_);
    EXPECT_EQ(readFile(from_), "new");
    EXPECT_EQ(readFile(elsewhere), "old");
    fs::remove(elsewhere);
    expectFileFailure(rename, "Rename failed", FileIO::RenameError, EXDEV, from_);
    EXPECT_EQ(readFile(from_), "new");
}

TEST_F(FileRenameTest, OntoItselfTheFileStays) {
    writeFile(from_, "only copy");
    fs::create_directory_symlink(temp_.path(), temp_ / "link");
    fs::create_hard_link(from_, temp_ / "second name");
    for (const std::string& same : {from_, temp_ / "/from", temp_ / "no/../from", temp_ / "link/from"}) {
        File::Rename(pathOf(from_), pathOf(same));
        File::Rename(pathOf(same), pathOf(from_));
        EXPECT_EQ(readFile(from_), "only copy") << same;
    }
    fs::create_directory(temp_ / "folder");
    File::Rename(pathOf(temp_ / "folder"), pathOf(temp_ / "link/folder"));
    EXPECT_TRUE(fs::is_directory(temp_ / "folder"));
}

TEST_F(FileRenameTest, OfTwoNamesOfOneFileOneGoes) {
    writeFile(from_, "only copy");
    fs::create_hard_link(from_, to_);
    rename();
    EXPECT_EQ(readFile(to_), "only copy");
    EXPECT_FALSE(isThere(from_));
}

TEST_F(FileRenameTest, TheSameNamesOfOneFileInTwoFoldersAreTwoNames) {
    writeFile(temp_ / "a/name", "only copy");
    fs::create_directory(temp_ / "b");
    fs::create_hard_link(temp_ / "a/name", temp_ / "b/name");
    File::Rename(pathOf(temp_ / "a/name"), pathOf(temp_ / "b/name"));
    EXPECT_EQ(readFile(temp_ / "b/name"), "only copy");
    EXPECT_FALSE(isThere(temp_ / "a/name"));
}

TEST_F(FileRenameTest, ALinkToTheTargetGoes) {
    writeFile(to_, "only copy");
    fs::create_symlink("to", from_);
    rename();
    EXPECT_EQ(readFile(to_), "only copy");
    EXPECT_FALSE(isThere(from_));
}

TEST_F(FileRenameTest, ALinkToTheSourceIsReplaced) {
    writeFile(from_, "only copy");
    fs::create_hard_link(from_, temp_ / "third name");
    fs::create_symlink("from", to_);
    rename();
    EXPECT_EQ(readFile(to_), "only copy");
    EXPECT_FALSE(fs::is_symlink(to_));
    EXPECT_FALSE(isThere(from_));
}

TEST_F(FileRenameTest, LinksToOtherFiles) {
    writeFile(from_, "new");
    fs::create_symlink("nowhere", to_);
    rename();
    EXPECT_EQ(readFile(to_), "new");
    EXPECT_FALSE(isThere(from_)) << "a link that leads nowhere is replaced";

    writeFile(from_, "newer");
    writeFile(temp_ / "third", "old");
    fs::remove(to_);
    fs::create_symlink("third", to_);
    rename();
    EXPECT_EQ(readFile(to_), "newer");
    EXPECT_FALSE(isThere(from_));
}

/// The Trash's folder is asked for once in a process, so all cases share one.
class FileRecycleTest : public testing::Test {
protected:
    FileRecycleTest() {
        setenv("HOME", home().path().c_str(), 1);
        unsetenv("XDG_DATA_HOME");
    }

    static const test::TempDir& home() {
        static const test::TempDir folder;
        return folder;
    }
    static std::string trashed(const std::string& name) { return home() / (".local/share/Trash/files/" + name); }
};

TEST_F(FileRecycleTest, MovesTheItemToTheTrash) {
    writeFile(home() / "report.txt", "contents");
    File::Recycle((home() / "report.txt").c_str());
    EXPECT_FALSE(isThere(home() / "report.txt"));
    EXPECT_EQ(readFile(trashed("report.txt")), "contents");

    writeFile(home() / "folder/inside", "x");
    File::Recycle((home() / "folder/").c_str());
    EXPECT_EQ(readFile(trashed("folder/inside")), "x");
}

TEST_F(FileRecycleTest, ALinkIsMovedItself) {
    writeFile(home() / "target", "stays");
    fs::create_symlink(home() / "target", home() / "link");
    fs::create_symlink(home() / "nowhere", home() / "dangling");
    File::Recycle((home() / "link").c_str());
    File::Recycle((home() / "dangling").c_str());
    EXPECT_EQ(readFile(home() / "target"), "stays");
    EXPECT_TRUE(fs::is_symlink(trashed("link")));
    EXPECT_TRUE(fs::is_symlink(trashed("dangling")));
}

TEST_F(FileRecycleTest, WhatCannotBeMovedStaysSilently) {
    File::Recycle(String());
    File::Recycle("");
    File::Recycle((home() / "missing").c_str());
    File::Recycle("/proc/self/status");
    writeFile(home() / "relative", "stays");
    const fs::path before = fs::current_path();
    fs::current_path(home().path());
    File::Recycle("relative");
    fs::current_path(before);
    EXPECT_EQ(readFile(home() / "relative"), "stays");
}

TEST(FileTypeTest, IsTheCodeOfTheFinderInformation) {
    const test::TempDir temp;
    const std::string path = temp / "file";
    const File file(pathOf(path));
    EXPECT_EQ(file.GetOSXFileType(), 0U) << "no file";
    writeFile(path, "x");
    EXPECT_EQ(file.GetOSXFileType(), 0U) << "no information";

    const char* attribute = "user.com.apple.FinderInfo";
    const std::string info = "TEXTttxt" + std::string(24, '\0');
    ASSERT_EQ(setxattr(path.c_str(), attribute, info.data(), info.size(), 0), 0);
    EXPECT_EQ(file.GetOSXFileType(), 0x54455854U);
    ASSERT_EQ(setxattr(path.c_str(), attribute, info.data(), 16, 0), 0);
    EXPECT_EQ(file.GetOSXFileType(), 0U) << "information of a wrong size";
    EXPECT_EQ(File().GetOSXFileType(), 0U);
}

}  // namespace
