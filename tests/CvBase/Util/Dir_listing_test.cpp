// The listings of a folder and the search for a file, most of them against plain models of what they promise.

#include <sys/stat.h>

#include <set>

#include "CvBase/Util/Folder/NameFilter.h"
#include "tests/CvBase/Util/FileTestSupport.h"

namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;
using Util::Dir;

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

/// A name of up to `length` bytes, any but "/" and NUL.
std::string randomName(std::mt19937& random, const std::string& letters, std::size_t length) {
    std::string name(1 + random() % length, '\0');
    std::generate(name.begin(), name.end(), [&] { return letters[random() % letters.size()]; });
    return name;
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

/// The search as it is promised, written down plainly.
std::string findPlainly(const std::string& name, const std::string& folder, bool recursive, unsigned int& visited) {
    const std::size_t dot = name.rfind('.');
    const Util::NameFilter filter(("*." + (dot == std::string::npos ? "" : name.substr(dot + 1))).c_str());
    std::set<std::string> fileNames, folderNames;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string entryName = entry.path().filename();
        if (entry.is_regular_file() && filter.matches(entryName.data(), entryName.size())) {
            fileNames.insert(entryName);
        } else if (!entry.is_regular_file()) {
            folderNames.insert(entryName);
        }
    }
    for (const std::string& file : fileNames) {
        if (file == name) {
            return folder + "/" + file;
        }
        if (++visited > 5000) {
            return "";
        }
    }
    for (const std::string& sub : recursive ? folderNames : std::set<std::string>()) {
        const std::string found = findPlainly(name, folder + "/" + sub, true, visited);
        if (!found.empty() || visited > 5000) {
            return found;
        }
    }
    return "";
}

void makeRandomTree(std::mt19937& random, const std::string& folder, int depth) {
    fs::create_directory(folder);
    for (unsigned long entries = random() % 7; entries > 0; --entries) {
        const std::string path = folder + "/" + randomName(random, "aA.", 4);
        if (depth > 0 && random() % 3 == 0 && !fs::exists(path)) {
            makeRandomTree(random, path, depth - 1);
        } else if (!fs::exists(path)) {
            writeFile(path, "");
        }
    }
}

std::ptrdiff_t countOpenDescriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), {});
}

TEST_F(DirListingTest, RandomTreesGiveWhatThePlainSearchGives) {
    std::mt19937 random(1);
    const auto openBefore = countOpenDescriptors();
    for (int i = 0; i < 1000; ++i) {
        const std::string tree = temp_ / std::to_string(i);
        makeRandomTree(random, tree, 3);
        for (int attempt = 0; attempt < 5; ++attempt) {
            const std::string name = randomName(random, "aA.", 4);
            unsigned int visited = random() % 3 == 0 ? 4995 + static_cast<unsigned int>(random() % 8) : 0;
            unsigned int expectedVisited = visited;
            const std::string expected = findPlainly(name, tree, attempt != 0, expectedVisited);
            const FilePath found = Dir::FindFile(name.c_str(), tree.c_str(), attempt != 0, visited);
            ASSERT_EQ(std::string(found.GetInternal().CStr()), expected) << tree << " " << name;
            ASSERT_EQ(visited, expectedVisited) << tree << " " << name;
        }
    }
    EXPECT_EQ(countOpenDescriptors(), openBefore);
}

}  // namespace
