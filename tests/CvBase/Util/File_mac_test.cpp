// Renaming, the Trash and the type code: what goes through the File Manager and the Finder.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "CvBase/Util/File.h"
#include "tests/CvBase/Util/FileTestSupport.h"
#include "tests/support/Surroundings.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using test::expectFileFailure;
using test::pathOf;
using test::readFile;
using test::writeFile;
using Util::File;
using Util::Exception::FileIO;

bool isThere(const std::string& path) {
    return fs::symlink_status(path).type() != fs::file_type::not_found;
}

class FileRenameTest : public testing::Test {
protected:
    static void rename(const std::string& from, const std::string& to) { File::Rename(pathOf(from), pathOf(to)); }

    static void expectRefused(int osError, const std::string& from, const std::string& to) {
        expectFileFailure([&] { rename(from, to); }, "Rename failed", FileIO::RenameError, osError, from);
    }

    /// Renames from_ to to_, and expects the file of `contents` there and nothing at from_.
    void expectRenamed(const std::string& contents) const {
        rename(from_, to_);
        EXPECT_EQ(readFile(to_), contents);
        EXPECT_FALSE(fs::is_symlink(to_));
        EXPECT_FALSE(isThere(from_));
    }

    const test::TempDir temp_;
    const std::string from_ = temp_ / "from";
    const std::string to_ = temp_ / "to";
};

TEST_F(FileRenameTest, ToANewNameAndOntoAnExistingFile) {
    for (const std::string contents : {"new", "newer"}) {
        writeFile(from_, contents);
        struct stat before {
        }, after{};
        ASSERT_EQ(stat(from_.c_str(), &before), 0);
        expectRenamed(contents);
        ASSERT_EQ(stat(to_.c_str(), &after), 0);
        EXPECT_EQ(before.st_ino, after.st_ino);
    }
    fs::remove(to_);
    writeFile(from_ + "/inside", "x");
    rename(from_, to_);
    EXPECT_EQ(readFile(to_ + "/inside"), "x") << "a folder gets another name";
}

TEST_F(FileRenameTest, WhatIsRefusedLeavesBothAsTheyAre) {
    const std::string inside = temp_ / "folder/inside";
    writeFile(to_, "old");
    writeFile(inside, "old");
    expectRefused(ENOENT, from_, to_);
    expectRefused(ENOENT, "", to_);
    expectRefused(ENOENT, to_, "");
    expectRefused(EISDIR, to_, temp_ / "folder");
    expectRefused(ENOTDIR, temp_ / "folder", to_);
    EXPECT_EQ(readFile(to_), "old");
    EXPECT_EQ(readFile(inside), "old");
}

TEST_F(FileRenameTest, AcrossVolumesBothFilesStay) {
    const std::string elsewhere = "/dev/shm/cvbase-rename-test-" + std::to_string(getpid());
    writeFile(from_, "new");
    writeFile(elsewhere, "old");
    expectRefused(EXDEV, from_, elsewhere);
    EXPECT_EQ(readFile(elsewhere), "old");
    fs::remove(elsewhere);
    expectRefused(EXDEV, from_, elsewhere);
    EXPECT_EQ(readFile(from_), "new");
}

TEST_F(FileRenameTest, OntoItselfTheFileStays) {
    writeFile(from_, "only copy");
    fs::create_directory_symlink(temp_.path(), temp_ / "link");
    fs::create_hard_link(from_, temp_ / "second name");
    for (const std::string& same : {from_, temp_ / "/from", temp_ / "no/../from", temp_ / "link/from"}) {
        rename(from_, same);
        rename(same, from_);
        EXPECT_EQ(readFile(from_), "only copy") << same;
    }
    fs::create_directory(temp_ / "folder");
    rename(temp_ / "folder", temp_ / "link/folder");
    EXPECT_TRUE(fs::is_directory(temp_ / "folder"));
}

TEST_F(FileRenameTest, OfTwoNamesOfOneFileOneGoes) {
    writeFile(to_, "only copy");
    fs::create_symlink("to", from_);
    expectRenamed("only copy");
    fs::create_hard_link(to_, from_);
    expectRenamed("only copy");

    fs::create_directory(temp_ / "folder");
    fs::create_hard_link(to_, temp_ / "folder/to");
    rename(to_, temp_ / "folder/to");
    EXPECT_EQ(readFile(temp_ / "folder/to"), "only copy") << "the same name in another folder is another name";
    EXPECT_FALSE(isThere(to_));
}

TEST_F(FileRenameTest, ALinkInTheWayIsReplaced) {
    writeFile(temp_ / "third", "old");
    for (const std::string target : {"from", "nowhere", "third"}) {
        writeFile(from_, "only copy");
        fs::remove(to_);
        fs::remove(temp_ / "another name");
        fs::create_hard_link(from_, temp_ / "another name");
        fs::create_symlink(target, to_);
        rename(from_, to_);
        EXPECT_EQ(readFile(to_), "only copy") << target;
        EXPECT_FALSE(isThere(from_)) << target;
        EXPECT_TRUE(target == "third" || !fs::is_symlink(to_));
    }
}

TEST_F(FileRenameTest, WhatALinkLedToStaysReadableThroughALinkToIt) {
    writeFile(temp_ / "elsewhere/file", "only copy");
    const struct {
        std::string linkText, target;
    } rows[] = {{"from", "to"}, {"between", "to"}, {"../from", "elsewhere/to"}, {temp_ / "from", "elsewhere/to"}};
    fs::create_symlink("from", temp_ / "between");
    for (const auto& row : rows) {
        for (const std::string& file : {std::string("elsewhere/file"), temp_ / "elsewhere/file"}) {
            const std::string to = temp_ / row.target;
            fs::create_symlink(file, from_);
            fs::create_symlink(row.linkText, to);
            rename(from_, to);
            EXPECT_EQ(readFile(to), "only copy") << row.linkText << ", " << file;
            EXPECT_FALSE(isThere(from_));
            fs::remove(to);
        }
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(temp_ / "elsewhere"), fs::directory_iterator()), 1);
}

TEST(FileRecycleTest, MovesTheItemItselfToTheTrashOrLeavesItSilently) {
    const test::TempDir home;
    const test::Surroundings surroundings;
    test::setHome(home.path());
    unsetenv("XDG_DATA_HOME");
    fs::current_path(home.path());
    writeFile(home / "report.txt", "contents");
    writeFile(home / "folder/inside", "x");
    writeFile(home / "stays", "");
    fs::create_symlink(home / "stays", home / "link");
    fs::create_symlink(home / "nowhere", home / "dangling");
    for (const std::string name : {"report.txt", "folder/", "link", "dangling"}) {
        File::Recycle((home / name).c_str());
        EXPECT_FALSE(isThere(home / name)) << name;
        EXPECT_TRUE(isThere(home / (".local/share/Trash/files/" + name))) << name;
    }
    for (const char* path : {"stays", "", "/missing", "/proc/self/status", static_cast<const char*>(nullptr)}) {
        File::Recycle(path);
    }
    EXPECT_TRUE(isThere(home / "stays")) << "a relative path, and a link's target";
}

TEST(FileTypeTest, IsTheCodeOfTheFinderInformation) {
    const test::TempDir temp;
    const std::string path = temp / "file", info = "TEXTttxt" + std::string(24, '\0');
    const File file(pathOf(path));
    EXPECT_EQ(file.GetOSXFileType(), 0U) << "no file";
    writeFile(path, "x");
    ASSERT_EQ(setxattr(path.c_str(), "user.com.apple.FinderInfo", info.data(), info.size(), 0), 0);
    EXPECT_EQ(file.GetOSXFileType(), 0x54455854U);
    EXPECT_EQ(File().GetOSXFileType(), 0U);
}

}  // namespace
