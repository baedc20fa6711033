// Texts and paths beside the standard library's.

#include "CvBase/common/common_std.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <iomanip>
#include <sstream>
#include <string>
#include <unordered_set>

#include "CvBase/common/common_filesystem.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

template <typename... Items>
std::string written(const Items&... items) {
    std::ostringstream out;
    (out << ... << items);
    return out.str();
}

TEST(Std, EveryByteComesAcross) {
    for (const std::string& bytes : {""s, "a"s, "a\0b"s, "\0"s, "a\0"s, "\xFF\0\0z"s, std::string(70000, 'x')}) {
        const String text = StringFrom(bytes);
        EXPECT_EQ(text.Length(), bytes.size());
        EXPECT_FALSE(text.IsNull());
        EXPECT_EQ(ToStdString(text), bytes);
        EXPECT_EQ(ToStringView(text), bytes);
        EXPECT_EQ(written(text), bytes);
    }
    EXPECT_EQ(ToStdString(String()) + written(String()), "");
}

TEST(Std, OutputIsThatOfAText) {
    EXPECT_EQ(written(std::setw(4), std::setfill('.'), String("ab"), '|', std::left, std::setw(3), String("c")),
              "..ab|c..");
    EXPECT_EQ(written(FilePath("/a//b", false), ' ', FolderPath("/a/x/..", false)), "/a/b /a/");
    // What a String could be made from is written as before.
    EXPECT_EQ(written(Char('x'), 'y', "z", true), "xyz1");
}

TEST(Std, EqualTextsAndPathsHaveOneHash) {
    EXPECT_EQ(
        (std::unordered_set<String>{String(), String(""), StringFrom("\0x"s), "a", StringFrom("a\0b"s), "b"}.size()),
        3U);
    const auto file = [](const char* path) { return FilePath(path, false); };
    EXPECT_EQ((std::unordered_set<FilePath>{file("/a//B"), file("\\A\\b"), file("/"), FilePath(), file("/b")}.size()),
              3U);
    const auto folder = [](const char* path) { return FolderPath(path, false); };
    EXPECT_EQ((std::unordered_set<FolderPath>{folder("/a"), folder("/A/"), folder("/"), FolderPath()}.size()), 2U);
}

TEST(Std, PathsComeAcross) {
    EXPECT_EQ(ToStdPath(FilePath("/a//b.txt", false)), fs::path("/a/b.txt"));
    EXPECT_EQ(ToStdPath(FolderPath("/a", false)), fs::path("/a/"));
    EXPECT_TRUE(ToStdPath(FilePath()).empty() && ToStdPath(FolderPath()).empty());
    EXPECT_EQ(ToStdPath(FilePathFrom("a.txt")), fs::current_path() / "a.txt");
    EXPECT_EQ(ToStdPath(FilePathFrom("~/a")), fs::current_path() / "~/a") << "not the home folder";
    EXPECT_EQ(ToStdPath(FolderPathFrom("/x/y")), fs::path("/x/y/"));
    EXPECT_TRUE(FilePathFrom({}).IsEmpty() && FolderPathFrom({}).IsEmpty());
}

}  // namespace
