#include "CvBase/Util/Folder/FolderScan.h"

#include "tests/support/Test.h"

namespace {

using namespace test;
using Util::FolderScan;
using Kind = FolderScan::Kind;

/// What `scan` says of the entry `name`.
Kind kindOf(FolderScan scan, const std::string& name) {
    while (scan.next()) {
        if (scan.name() == name) {
            const Kind kind = scan.kind();
            EXPECT_EQ(scan.likelyKind(), kind) << name;
            EXPECT_TRUE(!scan.isCalledFile() || kind != Kind::Folder) << name;
            return kind;
        }
    }
    ADD_FAILURE() << name << " is not there";
    return Kind::Missing;
}

TEST(FolderScan, TellsOfEachEntryWhatItsPathLeadsTo) {
    const TempDir temp;
    for (const char* name : {"file", "..file", "back\\slash", "folder/a", "folder\\a"}) {
        writeFile(temp / name, "");
    }
    fs::create_symlink("file", temp / "to file");
    fs::create_symlink("folder", temp / "to folder");
    fs::create_symlink("/dev/null", temp / "to device");
    fs::create_symlink("nowhere", temp / "to nothing");
    // clang-format off
    const struct { const char* name; Kind byText, byPath; } rows[] = {
        {"file", Kind::File, Kind::File},
        {"..file", Kind::File, Kind::File},
        {"back\\slash", Kind::File, Kind::Missing},
        {"folder\\a", Kind::File, Kind::File},
        {"folder", Kind::Folder, Kind::Folder},
        {"to file", Kind::File, Kind::File},
        {"to folder", Kind::Folder, Kind::Folder},
        {"to device", Kind::Folder, Kind::Folder},
        {"to nothing", Kind::Missing, Kind::Missing},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(kindOf(FolderScan(temp.path().c_str()), row.name), row.byText) << row.name;
        EXPECT_EQ(kindOf({(temp.path() + "/").c_str(), FolderPath(temp.path().c_str(), false)}, row.name), row.byPath)
            << row.name;
    }
}

}  // namespace
