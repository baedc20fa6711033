#include "CvBase/Util/File.h"

#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <sstream>

#include "tests/CvBase/Util/FileTestSupport.h"

namespace {

using namespace test;

class FileTest : public FileFixture {};

/// What a File opened with `mode` does: whether it opens a missing file; of a file of the bytes 0 to 9 the position,
/// the size, and the first three bytes read; after writing a byte there, the contents and the first byte.
std::string behaviourOf(unsigned int mode, const std::string& existing, const std::string& missing) {
    const auto succeeds = [](const auto& action) {
        try {
            action();
            return true;
        } catch (const FileIO&) {
            return false;
        }
    };
    std::ostringstream seen;
    fs::remove(missing);
    seen << succeeds([&] { File(pathOf(missing)).Open(mode); });
    writeFile(existing, "0123456789");
    File file(pathOf(existing));
    file.Open(mode);
    std::array<char, 4> bytes{};
    seen << ' ' << file.At().Value() << ' ' << file.Size().Value() << ' ';
    seen << (succeeds([&] { file.ReadBlock(bytes.data(), 3); }) ? bytes.data() : "-") << ' ';
    succeeds([&] { file.WriteBlock("X", 1); });
    file.Flush();
    seen << readFile(existing) << ' ';
    file.At(0);
    seen << (succeeds([&] { file.ReadBlock(bytes.data(), 1); }) ? bytes[0] : '-');
    return seen.str();
}

TEST_F(FileTest, EveryModeOpensAsItsTextSays) {
    const std::map<std::string, std::string> behaviours = {{"r", "0 0 10 012 0123456789 0"},
                                                           {"r+", "0 0 10 012 012X456789 0"},
                                                           {"w", "1 0 0 - X -"},
                                                           {"w+", "1 0 0 - X X"},
                                                           {"a", "1 10 10 - 0123456789X -"},
                                                           {"a+", "1 0 10 012 0123456789X 0"}};
    // clang-format off
    const char* const texts[] = {  // of the modes 0, 2, 4 and so on
        "r", "r", "w", "r+", "w+", "r+", "w+", "r+", "a", "a+", "a", "a+", "w+", "a+", "w+", "a+",
        "r", "r", "w", "w+", "w+", "w+", "w+", "w+", "a", "w+", "a", "w+", "w+", "w+", "w+", "w+",
    };
    // clang-format on
    for (unsigned int mode = 0; mode < 0x80; mode += 2) {
        EXPECT_EQ(behaviourOf(mode, path_, temp_ / "missing"), behaviours.at(texts[mode % 0x40 / 2])) << mode;
    }
}

TEST_F(FileTest, OpeningFails) {
    // clang-format off
    const struct { std::string path; unsigned int mode; int osError; } rows[] = {
        {path_, File::Read, ENOENT}, {"", File::Read, ENOENT}, {"/", File::Read, ENOENT},
        {temp_.path(), File::Write, EISDIR},
    };
    // clang-format on
    for (const auto& row : rows) {
        setPath(row.path);
        expectFailure([&] { file_.Open(row.mode); }, "Error opening file", FileIO::OpenError, row.osError);
        EXPECT_FALSE(file_.IsOpen());
    }
}

TEST_F(FileTest, ClosingTwiceIsHarmlessAndSetPathCloses) {
    file_.Close();
    file_.Open(File::Write);
    file_.WriteBlock("abc", 3);
    setPath(temp_ / "no/..\\\\other/");
    EXPECT_FALSE(file_.IsOpen());
    EXPECT_EQ(readFile(path_), "abc");
    file_.Open(File::Write);
    file_.Close();
    file_.Close();
    EXPECT_TRUE(fs::exists(temp_ / "other")) << "the system gets the folded path";
}

TEST_F(FileTest, NothingToTransferIsNoFailure) {
    char byte = 'x';
    std::vector<unsigned char> none;
    file_.ReadBlock(&byte, 0);
    file_.ReadBlock(static_cast<char*>(nullptr), 5);
    file_.ReadBlock(none);
    file_.WriteBlock(&byte, 0);
    file_.WriteBlock(static_cast<const char*>(nullptr), 5);
    file_.WriteBlock(none);
    EXPECT_EQ(byte, 'x');
}

TEST_F(FileTest, AClosedFileRefusesToTransferAndToMove) {
    char byte = 0;
    expectFailure([&] { file_.ReadBlock(&byte, 4000000000U); }, "Attempt to read 4000000000 bytes when not open",
                  FileIO::ReadError, 0);
    expectFailure([&] { file_.WriteBlock(&byte, 4000000000U); }, "Attempt to write 4000000000 bytes when not open",
                  FileIO::WriteError, 0);
    expectFailure([&] { file_.At(5000000000ULL); }, "Attempt to seek to 5000000000 when not open",
                  FileIO::UnexpectedError, 0);
    EXPECT_FALSE(file_.At().IsSet() || file_.Remaining().IsSet() || file_.AtEnd());
    file_.Flush();
}

TEST_F(FileTest, AShortReadFailsAndKeepsTheFileOpen) {
    writeFile(path_, "abc");
    for (const unsigned int mode : {File::Read | 0U, File::Read | File::Text}) {
        file_.Open(mode);
        std::array<char, 5> buffer{};
        errno = 77;  // left over from something else
        expectFailure([&] { file_.ReadBlock(buffer.data(), 5); }, "Attempt to read 5 bytes, only read 3 bytes",
                      FileIO::ReadError, 0);
        EXPECT_TRUE(file_.IsOpen() && file_.AtEnd());
        EXPECT_EQ(file_.At(), 3ULL);
        EXPECT_STREQ(buffer.data(), "abc");
        file_.At(0);
        std::vector<unsigned char> bytes(3);
        file_.ReadBlock(bytes);
        EXPECT_THAT(bytes, ElementsAre('a', 'b', 'c'));
        EXPECT_FALSE(file_.AtEnd()) << "at the end, but no read has met it";
        file_.Close();
    }
}

TEST_F(FileTest, TransfersThatTheSystemRefusesFail) {
    char byte = 'x';
    const std::string read = "Attempt to read 1 bytes, only read 0 bytes";
    file_.Open(File::Write);
    expectFailure([&] { file_.ReadBlock(&byte, 1); }, read, FileIO::ReadError, EBADF);
    file_.Close();
    file_.Open(File::Read);
    expectFailure([&] { file_.WriteBlock(&byte, 1); }, "Attempt to write 1 bytes, only wrote 0 bytes",
                  FileIO::WriteError, EBADF);

    setPath(temp_.path());
    file_.Open(File::Read);
    struct stat status {};
    ASSERT_EQ(stat(temp_.path().c_str(), &status), 0);
    EXPECT_EQ(file_.Size(), static_cast<unsigned long long>(status.st_size));
    expectFailure([&] { file_.ReadBlock(&byte, 1); }, read, FileIO::ReadError, EISDIR);
}

TEST_F(FileTest, AFullDiskShowsInALargeWrite) {
    setPath("/dev/full");
    file_.Open(File::Write);
    expectFailure([&] { file_.WriteBlock(std::vector<unsigned char>(1 << 20)); },
                  "Attempt to write 1048576 bytes, only wrote 0 bytes", FileIO::WriteError, ENOSPC);
}

TEST_F(FileTest, AFullDiskShowsAtTheEndWhateverFlushedBefore) {
    using Step = void (*)(File&);
    const Step steps[] = {[](File&) {}, [](File& file) { file.Flush(); },
                          [](File& file) { static_cast<void>(file.Size()); },
                          [](File& file) { file.WriteBlock("b", 1); }};
    setPath("/dev/full");
    for (const unsigned int mode : {File::Write | 0U, File::Read | File::Write}) {
        for (const Step step : steps) {
            file_.Open(mode);
            file_.WriteBlock("a", 1);
            step(file_);
            expectFailure([&] { file_.Close(); }, "Close failed", FileIO::CloseError, ENOSPC);
            EXPECT_FALSE(file_.IsOpen());
            file_.Close();
        }
    }
    file_.Open(File::Write);
    file_.WriteBlock("a", 1);
    setPath(path_);
    file_.Open(File::Write);
    file_.Close();
    fs::remove(path_);
    fs::create_symlink("/dev/full", path_);
    file_.Open(File::Write);
    file_.WriteBlock("a", 1);
    file_.Flush();
    fs::remove(path_);
    file_.Open(File::Write);
    file_.Close();
    File dies(pathOf("/dev/full"));
    dies.Open(File::Write);
    dies.WriteBlock("a", 1);
}

TEST_F(FileTest, PositionsAndSizesAre64Bit) {
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
    EXPECT_FALSE(file_.Remaining().IsSet()) << "past the end";
    for (const unsigned long long refused : {1ULL << 63, ~0ULL}) {
        expectFailure([&] { file_.At(refused); }, "Seek to " + std::to_string(refused) + " failed",
                      FileIO::UnexpectedError, EINVAL);
    }
    EXPECT_EQ(file_.At(), SIZE + 1);
}

TEST_F(FileTest, SizeCountsWhatIsStillBuffered) {
    file_.Open(File::Write);
    file_.WriteBlock("0123456789", 10);
    EXPECT_EQ(file_.Size(), 10ULL);
    EXPECT_EQ(file_.Remaining(), 0ULL);
    file_.WriteBlock("abc", 3);
    EXPECT_EQ(fs::file_size(path_), 10U);
    file_.Flush();
    EXPECT_EQ(fs::file_size(path_), 13U);
}

TEST_F(FileTest, SizeIsUnsetWhereThereIsNone) {
    fs::create_symlink(path_, path_);
    for (const std::string& path : {std::string(), std::string("/"), temp_ / "missing", path_}) {
        EXPECT_FALSE(File(pathOf(path)).Size().IsSet()) << path;
    }
}

TEST_F(FileTest, APipeHasNoPositionSoTextModeCannotCount) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    ASSERT_EQ(write(ends[1], "abcdef", 6), 6);
    setPath("/dev/fd/" + std::to_string(ends[0]));
    std::array<char, 4> buffer{};
    file_.Open(File::Read);
    file_.ReadBlock(buffer.data(), 3);
    EXPECT_STREQ(buffer.data(), "abc");
    EXPECT_FALSE(file_.At().IsSet() || file_.Remaining().IsSet());
    expectFailure([&] { file_.At(0); }, "Seek to 0 failed", FileIO::UnexpectedError, ESPIPE);

    // The stream's buffer took all that was in the pipe.
    ASSERT_EQ(write(ends[1], "abcdef", 6), 6);
    file_.Close();
    file_.Open(File::Read | File::Text);
    expectFailure([&] { file_.ReadBlock(buffer.data(), 3); }, "Attempt to read 3 bytes, only read 0 bytes",
                  FileIO::ReadError, 0);
    close(ends[0]);
    close(ends[1]);
}

// Random, because what goes wrong depends on what the C library's buffer holds.
TEST_F(FileTest, ReadingAndWritingAlternateFreely) {
    std::mt19937 engine(1);
    const auto random = [&](std::size_t below) { return static_cast<unsigned int>(engine() % below); };
    for (const unsigned int mode : {File::Read | File::Write, File::ReadWrite | 0U, File::Read | File::Append}) {
        writeFile(path_, "");
        file_.Open(mode);
        std::string model;
        std::size_t position = 0;
        for (int step = 0; step < 3000; ++step) {
            SCOPED_TRACE(step);
            std::string bytes(random(1000) == 0 ? 9000 : random(20) + 1, static_cast<char>('a' + step % 26));
            const unsigned int operation = random(10);
            if (operation < 4) {
                file_.WriteBlock(bytes.data(), static_cast<unsigned int>(bytes.size()));
                position = (mode & File::Append) != 0 ? model.size() : position;
                model.resize(std::max(model.size(), position));
                model.replace(position, bytes.size(), bytes);
                position += bytes.size();
            } else if (operation < 8) {
                const std::string expected = model.substr(std::min(position, model.size()), bytes.size());
                try {
                    file_.ReadBlock(bytes.data(), static_cast<unsigned int>(bytes.size()));
                    ASSERT_EQ(bytes, expected);
                } catch (const FileIO&) {
                    ASSERT_LT(expected.size(), bytes.size());
                    ASSERT_EQ(bytes.substr(0, expected.size()), expected);
                }
                position += expected.size();
            } else {
                position = random(model.size() + 10);
                file_.At(position);
            }
            ASSERT_EQ(file_.At(), position);
            ASSERT_EQ(step % 50 == 0 ? file_.Size().Value() : model.size(), model.size());
        }
        file_.Close();
        ASSERT_EQ(readFile(path_), model);
    }
}

}  // namespace
