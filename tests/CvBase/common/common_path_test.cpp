#include "CvBase/common/common_path.h"

#include "fuzz/PathModel.h"
#include "tests/support/Surroundings.h"
#include "tests/support/Text.h"

namespace {

using namespace test;

FilePath file(const std::string& path) {
    return FilePath(String(path.c_str()), false);
}

FolderPath folder(const std::string& path) {
    return FolderPath(String(path.c_str()), false);
}

class PathTest : public testing::Test {
private:
    const Surroundings surroundings_;
};

TEST_F(PathTest, HomeAndWorkingFolderMakeAPathAbsolute) {
    // clang-format off
    const struct { std::optional<std::string> home; std::string text, stored; } rows[] = {
        {"/Users/u", "~", "/Users/u/"}, {"/Users/u", "~/Music", "/Users/u/Music"}, {"/Users/u", "~\\Music", "/Users/u/Music"},
        {"/Users/u/", "~/Music", "/Users/u//Music"}, {"/Users/u", "~user", "/tmp/~user"}, {"/Users/u", "/~/x", "/~/x"},
        {"/Users/u", " ~", "/tmp/ ~"}, {std::nullopt, "~/Music", "/Music"}, {"", "~/Music", "/Music"},
        {"relative", "~/Music", "relative/Music"}, {"C:", "~/x", "C:/x"}, {"", "docs/a.txt", "/tmp/docs/a.txt"},
        {"", " a ", "/tmp/ a "}, {"", "C:\\x", "/tmp/C:\\x"}, {"", "\\etc\\x", "\\etc\\x"}, {"", "/a/../b//c/", "/a/../b//c/"},
        {"", "\xC3\xA0", "/tmp/\xC3\xA0"},  // the letter's second byte alone would be a blank
    };
    // clang-format on
    fs::current_path("/tmp");
    for (const auto& row : rows) {
        setHome(row.home);
        EXPECT_EQ(str(file(row.text).GetInternal()), row.stored) << row.text;
        EXPECT_EQ(str(FilePath(row.text.c_str(), true).GetInternal()), row.stored) << row.text;
    }
    setHome("relative");
    EXPECT_EQ(str((FolderPath() / "~").GetInternal()), "relative/") << "made absolute once";
    for (const char* blank : {static_cast<const char*>(nullptr), "", " ", " \t\n ", "\xA0\xA0"}) {
        FilePath reused = file("/a");
        reused.construct(blank, false);
        EXPECT_TRUE(reused.IsEmpty() && FilePath(blank, false).IsEmpty() && FolderPath(blank, false).IsEmpty());
    }
}

TEST_F(PathTest, AWorkingFolderThatCannotBeReadGivesTheRoot) {
    const TempDir temp;
    const std::string name(200, 'd');
    fs::current_path(temp.path());
    for (int depth = 0; depth < 8; ++depth) {
        fs::create_directory(name);
        fs::current_path(name);
    }
    EXPECT_EQ(str(file("docs/a").GetInternal()), "/docs/a") << "a working folder of more than 1600 characters";

    fs::create_directory(temp / "gone");
    fs::current_path(temp / "gone");
    fs::remove(temp / "gone");
    EXPECT_EQ(str(file("docs/a").GetInternal()), "/docs/a") << "a removed working folder";
}

TEST_F(PathTest, FoldingALongPathTakesLinearTime) {
    std::string text;
    for (int i = 0; i < 4000000; ++i) {
        text += "/a/..";
    }
    EXPECT_TRUE(holdsInACopy([&text] { return str(file(text + "/b").ToString()) == "/b"; })) << "an hour otherwise";
}

/// Calls `use` with every text of at most `length` characters out of `letters`.
void forEachText(const std::string& letters, std::size_t length, const std::function<void(const std::string&)>& use,
                 const std::string& begin = {}) {
    use(begin);
    if (length == 0) {
        return;
    }
    for (const char letter : letters) {
        forEachText(letters, length - 1, use, begin + letter);
    }
}

TEST_F(PathTest, EveryShortPathFoldsAsTheModelSays) {
    fs::current_path("/tmp");
    for (const std::string home : {"a", "..", ".", "\\"}) {
        setHome(home);
        forEachText("a./\\", 6, [&](const std::string& rest) {
            ASSERT_EQ(str(folder("~/" + rest).ToString()), fuzz::foldedPath(home + "/" + rest));
        });
    }
    forEachText("a./\\", 8, [&](const std::string& rest) {
        const std::string text = "/" + rest;
        const std::string folded = fuzz::foldedPath(text);
        ASSERT_EQ(str(file(text).ToString()), folded.substr(0, folded.size() - 1)) << text;
        ASSERT_EQ(folder(text).IsTopLevel(), folded == "/" || folded == "./") << text;
    });
}

TEST_F(PathTest, HasAFolderAndANameOfTwoParts) {
    // clang-format off
    const struct { const char *text, *folder, *base, *extension; } rows[] = {
        {"/a/b.c", "/a/", "b", "c"},
        {"/a/b.c.d", "/a/", "b.c", "d"},
        {"/a/.c", "/a/", "", "c"},
        {"/a/b.", "/a/", "b", ""},
        {"/a.b/c", "/a.b/", "c", ""},
        {"/a\\b", "/a/", "b", ""},
        {"\\a\\b/", "\\a/", "b", ""},
        {"/a//b\\/", "/a/", "b", ""},
        {"/a/\\b", "/a/", "b", ""},
        {"/a", "/", "a", ""},
        {"//a", "/", "a", ""},
        {"/.", "/", "", ""},
        {"/a/..", "/a/", ".", ""},
        {"/\\", "/tmp/./", "", ""},
    };
    // clang-format on
    fs::current_path("/tmp");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const FilePath path = file(row.text);
        EXPECT_EQ(str(path.GetFolder().GetInternal()), row.folder);
        EXPECT_EQ(str(path.GetBaseName()), row.base);
        EXPECT_EQ(str(path.GetExtension()), row.extension);
        const FolderPath asFolder = folder(row.text);
        EXPECT_EQ(str(asFolder.GetFolderName()), asFolder.IsTopLevel() ? "" : str(path.GetFilename()));
        EXPECT_EQ(str(asFolder.GetParent().GetInternal()), asFolder.IsTopLevel() ? "" : row.folder);
    }
}

TEST_F(PathTest, NoPathHasNoPartsAndADriveLetterCountsWhereItComesFirst) {
    EXPECT_EQ(str(FolderPath().ToString()), "/");
    EXPECT_EQ(str(FilePath().ToString()), "");
    EXPECT_TRUE(FilePath().GetFolder().IsEmpty() && FolderPath().GetParent().IsEmpty());

    fs::current_path("/tmp");
    setHome("C:");
    EXPECT_EQ(str(file("~/x").GetFolder().GetInternal()), "/tmp/C:/");
    EXPECT_EQ(str(file("~").GetFolder().GetInternal()), "/tmp/C:/");
    EXPECT_EQ(str(file("~").GetFilename()), "");
    EXPECT_EQ(str(file("/x/C:y").GetFilename()), "C:y");
}

TEST_F(PathTest, AFolderAndANameMakeAFilePath) {
    fs::current_path("/tmp");
    EXPECT_EQ(str((folder("/x\\") + "a.txt").GetInternal()), "/x\\a.txt");
    EXPECT_EQ(str((folder("/x") + "/a.txt").GetInternal()), "/x//a.txt");
    EXPECT_EQ(str((FolderPath() + "a.txt").GetInternal()), "/tmp/a.txt");
    EXPECT_TRUE((FolderPath() + String()).IsEmpty());
    EXPECT_EQ(str((folder("/x\\") / "a" / "b.d").GetInternal()), "/x\\a/b.d/");
    EXPECT_EQ(str((FolderPath() / "a").GetInternal()), "/tmp/a/");
    EXPECT_TRUE((FolderPath() / String()).IsEmpty());
}

template <class Path>
void expectOrder(const Path& a, const Path& b, int order) {
    EXPECT_EQ(a == b, order == 0);
    EXPECT_EQ(a < b, order < 0);
    EXPECT_EQ(a <= b, order <= 0);
}

TEST_F(PathTest, OrderIsThatOfTheFoldedTextsWithTheLettersOfAsciiInOneCase) {
    // clang-format off
    const struct { const char *a, *b; int order; } rows[] = {
        {"/Users/Z", "/uSERS/z", 0}, {"/a//b/", "\\A\\x\\..\\B", 0}, {"/", "", 0}, {"/a", "/B", -1}, {"/a", "/ab", -1}, {"/a", "/A/b", -1},
        {"/Z", "/[", 1}, {"/[", "/{", -1}, {"/\xC3\x89", "/\xC3\xA9", -1}, {"/a", "/a.b", 1},  // as "/a/" and "/a.b/"
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.a);
        expectOrder(file(row.a), file(row.b), row.order);
        expectOrder(file(row.b), file(row.a), -row.order);
        expectOrder(folder(row.a), folder(row.b), row.order);
        expectOrder(folder(row.b), folder(row.a), -row.order);
    }
}

}  // namespace
