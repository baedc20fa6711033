// The listings of a folder and the search for a file, most of them against plain models of what they promise.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/CvBase/Util/FileTestSupport.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using test::dirAt;
using test::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;
using Util::Dir;

class DirListingTest : public test::DirFixture {
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
    std::transform(names.begin(), names.end(), std::back_inserter(result), test::str);
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
    fs::create_symlink("file", temp_ / "to file");
    fs::create_symlink("folder", temp_ / "to folder");
    fs::create_symlink("/dev/null", temp_ / "to device");
    fs::create_symlink("nowhere", temp_ / "to nothing");
    EXPECT_THAT(files(temp_.path()), ElementsAre("file", "to file"));
    std::vector<String> names;
    dirAt(temp_.path()).GetFoldernames(names, "", false);
    EXPECT_THAT(strings(names), ElementsAre("folder", "pipe", "to device", "to folder"));
    Dir::GetFoldernames(temp_.path().c_str(), names, "TO *R", false);
    EXPECT_THAT(strings(names), ElementsAre("to folder"));
    EXPECT_THAT(files(temp_.path(), "", true),
                ElementsAre("file", "folder", "pipe", "to device", "to file", "to folder"));
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

TEST_F(DirListingTest, ABackslashInANameCannotBeAddressedByAPath) {
    make({"a\\b", "c"});
    writeFile(temp_ / "a/c", "x");
    std::vector<String> names;
    dirAt(temp_.path()).GetFilenames(names, "", false, true);
    EXPECT_THAT(strings(names), ElementsAre("a", "c"));
    Dir::GetFilenames(temp_.path().c_str(), names, "", false, true);
    EXPECT_THAT(strings(names), ElementsAre("a", "a\\b", "c"));
    make({"a/b"});
    dirAt(temp_.path()).GetFilenames(names, "", false, true);
    EXPECT_THAT(strings(names), ElementsAre("a", "a\\b", "c")) << "its path is that of another file now";
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
    EXPECT_TRUE(test::holdsForOrdinaryUser([&] {
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

bool matches(const std::string& name, const std::string& filter) {
    const auto lower = [](std::string text) {
        std::transform(text.begin(), text.end(), text.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c; });
        return text;
    };
    const std::size_t star = filter.find('*');
    const std::string prefix = lower(filter.substr(0, star));
    const std::string suffix = star == std::string::npos ? "" : lower(filter.substr(star + 1));
    const std::string lowered = lower(name);
    return lowered.size() >= prefix.size() && lowered.size() >= suffix.size() && lowered.rfind(prefix, 0) == 0 &&
           lowered.substr(lowered.size() - suffix.size()) == suffix;
}

TEST_F(DirListingTest, ManyNamesAreFilteredAndSortedByteByByte) {
    std::mt19937 random(1);
    std::set<std::string> names{".hidden"};
    for (int i = 0; i < 600; ++i) {
        const char* const starts[] = {"", "common-", "common-a part shares this", "\xC3\xA9"};
        names.insert(starts[i % 4] + randomName(random, "aAbB\x01\x7F\x80\xFF *?", i % 3 == 0 ? 30 : 3));
    }
    make(Names(names.begin(), names.end()));
    for (const std::string filter :
         {"", "*", "A*", "*b", "a*B", "a*a", "a**b", "**b", "*a*", ".*", " *", "?", "common-a*a", "aba", "a"}) {
        Names expected;
        std::copy_if(names.begin(), names.end(), std::back_inserter(expected),
                     [&](const std::string& name) { return matches(name, filter); });
        EXPECT_EQ(files(temp_.path(), filter), expected) << filter;
    }
}

std::string find(const std::string& name, const std::string& folder) {
    unsigned int visited = 0;
    return test::str(Dir::FindFile(name.c_str(), folder.c_str(), true, visited).GetInternal());
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
    const test::TempDir elsewhere;
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
    const std::string filter = "*." + (dot == std::string::npos ? "" : name.substr(dot + 1));
    std::set<std::string> fileNames, folderNames;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string entryName = entry.path().filename();
        if (entry.is_regular_file() && matches(entryName, filter)) {
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
