// The listings of a folder and the search for a file, most of them against plain models of what they promise.

#include <sys/stat.h>

#include "tests/CvBase/Util/FileTestSupport.h"

namespace {

using namespace test;
using testing::IsEmpty;

class DirListingTest : public DirFixture {
protected:
    void make(const std::vector<std::string>& names) const {
        for (const std::string& name : names) {
            writeFile(temp_ / name, "");
        }
    }
};

using Names = std::vector<std::string>;

Names strings(const std::vector<String>& names) {
    Names result;
    std::transform(names.begin(), names.end(), std::back_inserter(result), str);
    return result;
}

/// The files (or all entries) of `folder` that match, by the member and by the static listing, which must agree.
Names files(const std::string& folder, const std::string& filter = "", bool includeNonFiles = false) {
    std::vector<String> member, text;
    dirAt(folder).GetFilenames(member, filter.c_str(), false, includeNonFiles);
    Dir::GetFilenames(folder.c_str(), text, filter.c_str(), false, includeNonFiles);
    EXPECT_EQ(strings(member), strings(text));
    return strings(member);
}

TEST_F(DirListingTest, ListsKindsOfEntries) {
    make({"file"});
    fs::create_directory(temp_ / "folder");
    ASSERT_EQ(mkfifo((temp_ / "pipe").c_str(), 0600), 0);
    EXPECT_THAT(files(temp_.path()), ElementsAre("file"));
    std::vector<String> names;
    dirAt(temp_.path()).GetFoldernames(names, "", false);
    EXPECT_THAT(strings(names), ElementsAre("folder", "pipe"));
    Dir::GetFoldernames(temp_.path().c_str(), names, "F*R", false);
    EXPECT_THAT(strings(names), ElementsAre("folder"));
    EXPECT_THAT(files(temp_.path(), "", true), ElementsAre("file", "folder", "pipe"));
}

TEST_F(DirListingTest, AppendingAListingSortsAllNamesUnlessTheFolderCannotBeRead) {
    make({"b", "d"});
    std::vector<String> names{"z", "c", String()};
    Dir::GetFilenames(temp_.path().c_str(), names, "b", true, false);
    dirAt(temp_.path()).GetFilenames(names, "", true, false);
    EXPECT_THAT(strings(names), ElementsAre("", "b", "b", "c", "d", "z"));
    dirAt(temp_.path()).GetFoldernames(names, "", false);
    EXPECT_THAT(names, IsEmpty());

    names = {"z", "a"};
    Dir::GetFilenames((temp_ / "b").c_str(), names, "", true, true);
    dirAt(temp_ / "missing").GetFoldernames(names, "", true);
    EXPECT_THAT(strings(names), ElementsAre("z", "a")) << "not even sorted";
    dirAt(temp_ / "missing").GetFilenames(names, "", false, true);
    EXPECT_THAT(names, IsEmpty());

    names = {temp_.path().c_str(), "*B"};
    Dir::GetFilenames(names[0], names, names[1], false, false);
    EXPECT_THAT(strings(names), ElementsAre("b")) << "the arguments may be names of the list";
}

TEST_F(DirListingTest, WhereTheRootIsFoldedAwayEntriesAreSoughtInTheWorkingFolder) {
    make({"etc"});
    std::vector<String> names;
    dirAt("/..").GetFilenames(names, "", false, false);
    EXPECT_THAT(strings(names), ElementsAre("etc")) << "a name of the root, but the file is here";
}

TEST_F(DirListingTest, AFolderThatMayNotBeSearchedListsNothing) {
    make({"file.txt"});
    fs::create_directory(temp_ / "folder");
    fs::permissions(temp_.path(), fs::perms(0444));
    EXPECT_TRUE(holdsForOrdinaryUser([&] {
        unsigned int visited = 0;
        std::vector<String> names;
        dirAt(temp_.path()).GetFilenames(names, "", false, true);
        Dir::GetFoldernames(temp_.path().c_str(), names, "", true);
        return names.empty() && Dir::FindFile("file.txt", temp_.path().c_str(), true, visited).IsEmpty() &&
               visited == 0;
    }));
    fs::permissions(temp_.path(), fs::perms(0755));
}

TEST_F(DirListingTest, EntriesWhosePathIsTooLongAreLeftOut) {
    std::string path = temp_.path();
    while (path.size() < 4090) {
        path += "/" + std::string(path.size() < 3800 ? 200 : 4090 - path.size() - 1, 'd');
    }
    fs::create_directories(path);
    fs::current_path(path);
    for (const char* name : {"1", "1234", "12345"}) {
        writeFile(std::string("./") + name, "");
    }
    fs::current_path(temp_.path());
    make({"12345"});
    EXPECT_THAT(files(path), ElementsAre("1", "1234"));
    EXPECT_THAT(files(path, "", true), ElementsAre("1", "1234"));
}

std::string find(const std::string& name, const std::string& folder) {
    unsigned int visited = 0;
    return str(Dir::FindFile(name.c_str(), folder.c_str(), true, visited).GetInternal());
}

TEST_F(DirListingTest, TheSearchTakesTheFolderAsItIsWritten) {
    writeFile(temp_ / "b/x.txt", "");
    EXPECT_EQ(find("x.txt", temp_ / "b/"), temp_ / "b//x.txt");
    EXPECT_EQ(find("x.txt", temp_ / "missing"), "");
    EXPECT_EQ(find("b/x.txt", temp_.path()), "");
    EXPECT_EQ(find("", temp_.path()), "");
    make({"b/0\\x.txt", "b/1\\x.txt"});
    EXPECT_EQ(find("x.txt", temp_ / "b"), temp_ / "b/0\\x.txt") << "the last component of that name";
}

TEST_F(DirListingTest, TheSearchFollowsLinksUnlessToTheFolderItself) {
    const TempDir elsewhere;
    writeFile(elsewhere / "x.txt", "");
    fs::create_directory_symlink(elsewhere.path(), temp_ / "folder");
    fs::create_symlink(elsewhere / "x.txt", temp_ / "y.txt");
    EXPECT_EQ(find("x.txt", temp_.path()), temp_ / "folder/x.txt");
    EXPECT_EQ(find("y.txt", temp_.path()), temp_ / "y.txt");

    fs::create_directory_symlink(elsewhere.path(), elsewhere / "self 1");
    fs::create_directory_symlink(".", elsewhere / "self 2");
    writeFile(elsewhere / "z/other.txt", "");
    unsigned int visited = 0;
    EXPECT_TRUE(Dir::FindFile("y.txt", elsewhere.path().c_str(), true, visited).IsEmpty());
    EXPECT_EQ(visited, 2U) << "x.txt and z/other.txt, once each";
}

TEST_F(DirListingTest, TheSearchVisitsSortedNamesOfTheSameExtensionAndThenTheFolders) {
    make({"plain", "end.", "b.t", "B.T", "a.t", "c.x", "d/f.t", "d/a.t", "d/e/z.t", "d/e/y.u", "g/z.t", "g/y.u"});
    fs::create_directory(temp_ / "a.x");
    constexpr unsigned int MOST = 5000;
    // clang-format off
    const struct { const char* name; bool recursive; unsigned int before; const char* found; unsigned int visits; } rows[] = {
        {"B.T", true, 0, "/B.T", 0},
        {"a.t", true, 0, "/a.t", 1},
        {"b.t", false, 7, "/b.t", 2},
        {"A.T", false, 0, "", 3},
        {"c.x", true, 0, "/c.x", 0},
        {"end.", true, 0, "/end.", 0},
        {"plain", true, 0, "", 1},
        {"x.", true, 0, "", 1},
        {"y.u", true, 0, "/d/e/y.u", 0},
        {"z.t", true, 0, "/d/e/z.t", 5},
        {"z.t", false, 0, "", 3},
        {"z.t", true, MOST - 5, "/d/e/z.t", 5},
        {"z.t", true, MOST - 4, "", 5},
        {"z.t", true, MOST - 1, "", 2},
        {"a.t", true, MOST, "", 1},
        {"B.T", true, MOST + 9, "/B.T", 0},
    };
    // clang-format on
    const std::size_t openBefore = openDescriptors();
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.name) + " after " + std::to_string(row.before));
        unsigned int visited = row.before;
        const FilePath found = Dir::FindFile(row.name, temp_.path().c_str(), row.recursive, visited);
        EXPECT_EQ(str(found.GetInternal()), *row.found == '\0' ? "" : temp_.path() + row.found);
        EXPECT_EQ(visited, row.before + row.visits);
    }
    EXPECT_EQ(openDescriptors(), openBefore);
}

}  // namespace
