// Renaming, the Trash and the type code: what goes through the File Manager and the Finder.

#include <sys/xattr.h>
#include <unistd.h>

#include <set>

#include "tests/CvBase/Util/FileTestSupport.h"

namespace {

using namespace test;

bool isThere(const std::string& path) {
    return fs::symlink_status(path).type() != fs::file_type::not_found;
}

/// What is in the folder: "name=contents" for a file, with a star where it has more names than one, "name/" for a
/// folder, "name@" for a link and "name@nowhere" for one that leads nowhere.
std::string contentsOf(const std::string& folder) {
    std::set<std::string> entries;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = entry.path().lexically_relative(folder);
        entries.insert(entry.is_symlink() ? name + (entry.exists() ? "@" : "@nowhere")
                       : entry.is_directory()
                           ? name + "/"
                           : name + "=" + readFile(entry.path()) + (entry.hard_link_count() > 1 ? "*" : ""));
    }
    std::string text;
    for (const std::string& entry : entries) {
        text += entry + " ";
    }
    return text;
}

TEST(FileRename, GivesTheFileItsNewNameOrLeavesAllAsItIs) {
    const std::string file = "printf x >from; ", twins = file + "ln from twin; ",
                      link = "mkdir d; printf x >d/f; ln -s d/f from; ";
    // clang-format off
    const struct { std::string made, from, to; int osError; std::string result; } rows[] = {
        {file, "from", "to", 0, "to=x "},
        {twins + "printf y >to", "from", "to", 0, "to=x* twin=x* "},
        {"mkdir from; printf x >from/inside", "from", "to", 0, "to/ to/inside=x "},
        {"", "from", "to", ENOENT, ""},
        {"printf y >to", "from", "to", ENOENT, "to=y "},
        {file + "mkdir to", "from", "to", EISDIR, "from=x to/ "},
        {"mkdir from; printf y >to", "from", "to", ENOTDIR, "from/ to=y "},
        {file, "from", "from", 0, "from=x "},
        {twins, "from", "no/..\\/from", 0, "from=x* twin=x* "},
        {twins + "ln -s . link", "from", "link/from", 0, "from=x* link@ twin=x* "},
        {twins + "ln -s . link", "link/from", "from", 0, "from=x* link@ twin=x* "},
        {"mkdir from; ln -s . link", "from", "link/from", 0, "from/ link@ "},
        {"printf x >to; ln -s to from", "from", "to", 0, "to=x "},
        {"printf x >to; ln to from", "from", "to", 0, "to=x "},
        {file + "mkdir folder; ln from folder/from", "from", "folder/from", 0, "folder/ folder/from=x "},
        {twins + "ln -s from to", "from", "to", 0, "to=x* twin=x* "},
        {twins + "ln -s nowhere to", "from", "to", 0, "to=x* twin=x* "},
        {link + "ln -s from to", "from", "to", 0, "d/ d/f=x to@ "},
        {link + "ln -s from between; ln -s between to", "from", "to", 0, "between@nowhere d/ d/f=x to@ "},
        {link + "ln -s ../from d/to", "from", "d/to", 0, "d/ d/f=x d/to@ "},
        {link + "ln -s \"$PWD/from\" to", "from", "to", 0, "d/ d/f=x to@ "},
        {"mkdir d e; printf x >d/f; ln -s \"$PWD/d/f\" from; ln -s ../from e/to", "from", "e/to", 0, "d/ d/f=x e/ e/to@ "},
        {twins + "printf y >third; ln -s third to", "from", "to", 0, "third=x* to@ twin=x* "},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.made + ": " + row.from + " to " + row.to);
        const TempDir temp;
        ASSERT_EQ(run({"sh", "-c", row.made}, {"", temp.path(), {}, {}, 0}).exitStatus, 0);
        const auto rename = [&] { File::Rename(pathOf(temp / row.from), pathOf(temp / row.to)); };
        if (row.osError == 0) {
            rename();
        } else {
            expectFileFailure(rename, "Rename failed", FileIO::RenameError, row.osError, temp / row.from);
        }
        EXPECT_EQ(contentsOf(temp.path()), row.result);
    }
}

TEST(FileRename, RefusesNoPathAndAnotherVolume) {
    const TempDir temp;
    const std::string from = temp / "from", elsewhere = "/dev/shm/cvbase-rename-test-" + std::to_string(getpid());
    writeFile(from, "new");
    writeFile(elsewhere, "old");
    const auto refuse = [](int osError, const std::string& source, const std::string& target) {
        expectFileFailure([&] { File::Rename(pathOf(source), pathOf(target)); }, "Rename failed", FileIO::RenameError,
                          osError, source);
    };
    refuse(EXDEV, from, elsewhere);
    EXPECT_EQ(readFile(elsewhere), "old");
    fs::remove(elsewhere);
    refuse(EXDEV, from, elsewhere);
    refuse(ENOENT, "", from);
    refuse(ENOENT, from, "");
    EXPECT_EQ(readFile(from), "new");
}

TEST(FileRecycleTest, MovesTheItemItselfToTheTrashOrLeavesItSilently) {
    const TempDir home;
    const Surroundings surroundings;
    setHome(home.path());
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
    const TempDir temp;
    const std::string path = temp / "file", info = "TEXTttxt" + std::string(24, '\0');
    const File file(pathOf(path));
    EXPECT_EQ(file.GetOSXFileType(), 0U) << "no file";
    writeFile(path, "x");
    ASSERT_EQ(setxattr(path.c_str(), "user.com.apple.FinderInfo", info.data(), info.size(), 0), 0);
    EXPECT_EQ(file.GetOSXFileType(), 0x54455854U);
    ASSERT_EQ(setxattr(path.c_str(), "user.com.apple.FinderInfo", info.data(), info.size() - 1, 0), 0);
    EXPECT_EQ(file.GetOSXFileType(), 0U) << "it is no Finder information";
    EXPECT_EQ(File().GetOSXFileType(), 0U);
}

}  // namespace
