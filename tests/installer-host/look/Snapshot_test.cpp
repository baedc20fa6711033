#include "installer-host/look/Snapshot.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/TempDir.h"

namespace {

using namespace host;

TEST(Snapshot, NamesWhatCannotBeRead) {
    const test::TempDir root;
    const std::string folder = root / "Library/Preferences/";
    test::writeFile(folder + "damaged.plist", "no property list");
    test::writeFile(folder + "list.plist", "<plist><array/></plist>");
    test::writeFile(folder + "inner/good.plist", "<plist><dict><key>a</key><true/></dict></plist>");
    test::writeFile(folder + "good.plist.corrupt-1", "");
    std::filesystem::create_symlink("/etc/passwd", folder + "link.plist");
    ASSERT_EQ(mkfifo((folder + "fifo.plist").c_str(), 0600), 0);

    const Snapshot snapshot = takeSnapshot(RootFolder(root.path()));
    EXPECT_NE(snapshot.domains.at("damaged").problem, "");
    EXPECT_EQ(snapshot.domains.at("list").problem, "it holds no dictionary");
    EXPECT_EQ(snapshot.domains.at("fifo").problem, "it is no file");
    EXPECT_EQ(snapshot.domains.at("link").problem, "No such file or directory")
        << "a link must not lead out of the root";
    EXPECT_EQ(snapshot.domains.at("inner/good").problem, "");
    EXPECT_EQ(snapshot.domains.at("inner/good").keys.count("a"), 1U);
    EXPECT_EQ(snapshot.otherFiles, std::set<std::string>{"good.plist.corrupt-1"});
}

}  // namespace
