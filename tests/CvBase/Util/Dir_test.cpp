#include "CvBase/Util/Dir.h"

#include <sys/stat.h>

#include "tests/CvBase/Util/FileTestSupport.h"

namespace {

using namespace test;

class DirTest : public DirFixture {};

TEST_F(DirTest, OnlyAFolderExists) {
    writeFile(temp_ / "file", "x");
    fs::create_directory_symlink(temp_.path(), temp_ / "link");
    fs::create_symlink(temp_ / "nowhere", temp_ / "dangling");
    for (const std::string& path : {std::string("/"), temp_.path(), temp_ / "link"}) {
        EXPECT_TRUE(dirAt(path).Exists()) << path;
    }
    for (const std::string& path : {temp_ / "file", temp_ / "dangling", temp_ / "missing", std::string()}) {
        EXPECT_FALSE(dirAt(path).Exists()) << path;
    }
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
    writeFile(temp_ / "made/file", "x");
    fs::create_symlink(temp_ / "nowhere", temp_ / "dangling");
    const std::string longName(300, 'n');
    // clang-format off
    const struct { std::string path; bool withParents; const char* message; } rows[] = {
        {"no/a", false, "mkdir() failed with -1/2"}, {"made/file", false, "mkdir() failed with -1/17"},
        {"made/file", true, "mkdir() failed with -1/17"}, {"new/../dangling/x", true, "mkdir() failed with -1/17"},
        {"a/b/" + longName, true, "mkdir() failed with -1/36"},
    };
    // clang-format on
    for (const auto& row : rows) {
        expectFolderFailure([&] { dirAt(temp_ / row.path).Create(row.withParents); }, row.message, FileIO::WriteError,
                            row.withParents ? 105 : 118, temp_ / (row.path + "/"));
    }
    EXPECT_TRUE(fs::is_directory(temp_ / "a/b")) << "what was made before the failure stays";
}

TEST_F(DirTest, CreatingARelativeTextWithItsParentsDoesNothing) {
    setHome("relative");
    dirAt("/../relative/path/").Create(true);
    dirAt("~/path").Create(true);
    EXPECT_FALSE(fs::exists("relative"));
    dirAt("/../relative").Create(false);
    EXPECT_TRUE(fs::is_directory("relative")) << "without its parents it is made in the working folder";

    setHome("~");
    fs::create_directory("~");
    dirAt("~/a").Create(true);
    EXPECT_TRUE(fs::is_directory("~/a")) << "in the folded text a tilde is an ordinary name";
}

TEST_F(DirTest, RemovesAnEmptyFolder) {
    writeFile(temp_ / "full/file", "x");
    fs::create_directory(temp_ / "empty");
    fs::create_directory_symlink(temp_ / "empty", temp_ / "link");
    for (const char* name : {"full", "link"}) {
        expectFolderFailure([&] { dirAt(temp_ / name).Remove(); }, "rmdir() failed", FileIO::RemoveError, 135,
                            temp_ / (name + std::string("/")));
    }
    dirAt(temp_ / "full/file").Remove();
    EXPECT_TRUE(fs::exists(temp_ / "full/file")) << "a file is not a folder";
    EXPECT_TRUE(fs::exists(temp_ / "empty"));
    dirAt(temp_ / "empty").Remove();
    EXPECT_FALSE(fs::exists(temp_ / "empty"));
    dirAt(temp_ / "empty").Remove();
}

TEST_F(DirTest, Times) {
    Dir dir = dirAt(temp_.path());
    dir.SetTime({1000000001, -2});
    Util::FileTime time;
    dir.GetTime(&time);
    EXPECT_EQ(time.accessTime, 1000000001);
    EXPECT_EQ(time.modificationTime, -2);

    for (const std::string& none : {temp_ / "missing/", std::string()}) {
        dir.SetPath(FolderPath(none.c_str(), false));
        expectFolderFailure([&] { dir.GetTime(&time); }, "Error getting folder time", FileIO::UnexpectedError, 171,
                            none);
        expectFolderFailure([&] { dir.SetTime(time); }, "Error setting folder time", FileIO::UnexpectedError, 158,
                            none);
    }
    EXPECT_EQ(time.modificationTime, -2);
}

TEST_F(DirTest, FreeSpaceIsASigned32BitProduct) {
    Dir::DirInfo info;
    info.freeBytes = 77;
    EXPECT_FALSE(dirAt(temp_ / "missing").GetDirInfo(info));
    EXPECT_EQ(info.freeBytes, 77);

    std::uintmax_t available = 0;
    do {  // until nobody writes to the volume meanwhile
        available = fs::space(temp_.path()).available;
        ASSERT_TRUE(dirAt(temp_.path()).GetDirInfo(info));
    } while (available != fs::space(temp_.path()).available);
    EXPECT_EQ(info.freeBytes, static_cast<std::int32_t>(static_cast<std::uint32_t>(available)));
}

TEST_F(DirTest, NoPathIsNoFolderAndNotTheRoot) {
    Dir none;
    Dir::DirInfo info;
    std::vector<String> names{"left over"};
    expectFolderFailure([&] { none.Create(false); }, "mkdir() failed with -1/2", FileIO::WriteError, 118, "");
    none.Create(true);
    none.Remove();
    EXPECT_FALSE(none.GetDirInfo(info));
    none.GetFoldernames(names, "", false);
    EXPECT_TRUE(names.empty());
    Dir::GetFilenames("", names, "", false, true);
    EXPECT_TRUE(names.empty());
}

}  // namespace
