// Where an open file is and how large it is.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "tests/CvBase/Util/FileTestSupport.h"

namespace {

namespace fs = std::filesystem;
using test::pathOf;
using test::writeFile;
using Util::File;
using Util::Exception::FileIO;

class FilePositionTest : public test::FileFixture {};

TEST_F(FilePositionTest, PositionsAndSizesAre64Bit) {
    constexpr unsigned long long SIZE = 5000000003ULL;
    writeFile(path_, "");
    fs::resize_file(path_, SIZE);
    EXPECT_EQ(file_.Size(), SIZE);
    file_.Open(File::Read | File::Write);
    EXPECT_EQ(file_.Size(), SIZE);
    file_.At(SIZE - 3);
    EXPECT_EQ(file_.Remaining(), 3ULL);
    file_.WriteBlock("end", 3);
    EXPECT_EQ(file_.At(), SIZE);
    EXPECT_EQ(file_.Remaining(), 0ULL);
    file_.At(SIZE + 1);
    EXPECT_EQ(file_.At(), SIZE + 1);
    EXPECT_FALSE(file_.Remaining().IsSet()) << "behind the end";
    for (const unsigned long long refused : {1ULL << 63, ~0ULL}) {
        expectFailure([&] { file_.At(refused); }, "Seek to " + std::to_string(refused) + " failed",
                      FileIO::UnexpectedError, EINVAL);
    }
    EXPECT_EQ(file_.At(), SIZE + 1);
}

TEST_F(FilePositionTest, SizeCountsWhatIsStillBuffered) {
    file_.Open(File::Write);
    file_.WriteBlock("0123456789", 10);
    EXPECT_EQ(file_.Size(), 10ULL);
    EXPECT_EQ(file_.Remaining(), 0ULL);
    file_.WriteBlock("abc", 3);
    EXPECT_EQ(fs::file_size(path_), 10U);
    file_.Flush();
    EXPECT_EQ(fs::file_size(path_), 13U);
}

TEST_F(FilePositionTest, SizeIsUnsetWhereThereIsNone) {
    fs::create_symlink(path_, path_);
    for (const std::string& path : {std::string(), std::string("/"), temp_ / "missing", path_}) {
        EXPECT_FALSE(File(pathOf(path)).Size().IsSet()) << path;
    }
}

}  // namespace
