#include "CvBase/Util/File.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/CvBase/Util/FileTestSupport.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using test::expectFileFailure;
using test::pathOf;
using test::readFile;
using test::writeFile;
using Util::File;
using Util::Exception::FileIO;

class FileTest : public testing::Test {
protected:
    const test::TempDir temp_;
    const std::string path_ = temp_ / "file";
    File file_{pathOf(path_)};
};

/// What a stream does with the ten bytes 0 to 9 of an existing file and with a missing file.
struct Behaviour {
    bool opensMissing = false;
    long long position = -1, size = -1;
    std::string read;
    std::string contents;  ///< of the file, after a byte was written

    bool operator==(const Behaviour& other) const {
        return opensMissing == other.opensMissing && position == other.position && size == other.size &&
               read == other.read && contents == other.contents;
    }
};

/// How the system's own fopen() behaves with `modeText`.
Behaviour behaviourOf(const std::string& modeText, const std::string& existing, const std::string& missing) {
    const auto open = [&](const std::string& path) {
        return std::unique_ptr<std::FILE, int (*)(std::FILE*)>(std::fopen(path.c_str(), modeText.c_str()), std::fclose);
    };
    Behaviour result;
    result.opensMissing = open(missing) != nullptr;
    writeFile(existing, "0123456789");
    {
        const auto stream = open(existing);
        result.position = std::ftell(stream.get());
        result.size = static_cast<long long>(fs::file_size(existing));
        std::array<char, 3> buffer{};
        result.read.assign(buffer.data(), std::fread(buffer.data(), 1, buffer.size(), stream.get()));
        std::fseek(stream.get(), 0, SEEK_CUR);
        std::fwrite("X", 1, 1, stream.get());
    }
    result.contents = readFile(existing);
    return result;
}

Behaviour behaviourOf(unsigned int mode, const std::string& existing, const std::string& missing) {
    const auto succeeds = [](const auto& action) {
        try {
            action();
            return true;
        } catch (const FileIO&) {
            return false;
        }
    };
    Behaviour result;
    result.opensMissing = succeeds([&] { File(pathOf(missing)).Open(mode); });
    writeFile(existing, "0123456789");
    File file(pathOf(existing));
    file.Open(mode);
    result.position = static_cast<long long>(file.At().Value());
    result.size = static_cast<long long>(file.Size().Value());
    std::array<char, 3> buffer{};
    if (succeeds([&] { file.ReadBlock(buffer.data(), 3); })) {
        result.read.assign(buffer.data(), 3);
    }
    succeeds([&] { file.WriteBlock("X", 1); });
    file.Close();
    result.contents = readFile(existing);
    return result;
}

TEST_F(FileTest, EveryModeOpensAsItsTextSays) {
    struct Row {
        unsigned int mode;
        const char* text;
    };
    const Row rows[] = {
        {0x00, "r"}, {0x02, "r"},  {0x04, "w"}, {0x06, "r+"}, {0x08, "w+"}, {0x0A, "r+"}, {0x0C, "w+"}, {0x0E, "r+"},
        {0x10, "a"}, {0x12, "a+"}, {0x14, "a"}, {0x16, "a+"}, {0x18, "w+"}, {0x1A, "a+"}, {0x1C, "w+"}, {0x1E, "a+"},
        {0x20, "r"}, {0x22, "r"},  {0x24, "w"}, {0x26, "w+"}, {0x28, "w+"}, {0x2A, "w+"}, {0x2C, "w+"}, {0x2E, "w+"},
        {0x30, "a"}, {0x32, "w+"}, {0x34, "a"}, {0x36, "w+"}, {0x38, "w+"}, {0x3A, "w+"}, {0x3C, "w+"}, {0x3E, "w+"},
    };
    for (const Row& row : rows) {
        for (const unsigned int textBit : {0U, 0x40U}) {
            SCOPED_TRACE(testing::Message() << std::hex << (row.mode | textBit) << " " << row.text);
            fs::remove(temp_ / "missing");
            const Behaviour expected = behaviourOf(row.text, path_, temp_ / "missing");
            fs::remove(temp_ / "missing");
            EXPECT_TRUE(behaviourOf(row.mode | textBit, path_, temp_ / "missing") == expected);
        }
    }
}

TEST_F(FileTest, OpeningFails) {
    expectFileFailure([&] { file_.Open(File::Read); }, "Error opening file", FileIO::OpenError, ENOENT, path_);
    EXPECT_FALSE(file_.IsOpen());
    expectFileFailure([] { File().Open(File::Read); }, "Error opening file", FileIO::OpenError, ENOENT, "");
    file_.SetPath(pathOf(temp_.path()));
    expectFileFailure([&] { file_.Open(File::Write); }, "Error opening file", FileIO::OpenError, EISDIR, temp_.path());
    file_.SetPath(pathOf("/"));
    expectFileFailure([&] { file_.Open(File::Read); }, "Error opening file", FileIO::OpenError, ENOENT, "/");
}

TEST_F(FileTest, ThePathIsFoldedForTheSystem) {
    writeFile(path_, "x");
    EXPECT_TRUE(File(pathOf(temp_ / "no/..\\\\file/")).Exists());
}

TEST_F(FileTest, ClosingTwiceIsHarmlessAndSetPathCloses) {
    file_.Close();
    file_.Open(File::Write);
    EXPECT_TRUE(file_.IsOpen());
    file_.WriteBlock("abc", 3);
    file_.SetPath(pathOf(temp_ / "other"));
    EXPECT_FALSE(file_.IsOpen());
    EXPECT_EQ(readFile(path_), "abc");
    file_.Open(File::Write);
    file_.Close();
    file_.Close();
    EXPECT_TRUE(fs::exists(temp_ / "other"));
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
    std::vector<unsigned char> bytes(7);
    const auto read = FileIO::ReadError;
    const auto write = FileIO::WriteError;
    expectFileFailure([&] { file_.ReadBlock(&byte, 4000000000U); }, "Attempt to read 4000000000 bytes when not open",
                      read, 0, path_);
    expectFileFailure([&] { file_.ReadBlock(bytes); }, "Attempt to read 7 bytes when not open", read, 0, path_);
    expectFileFailure([&] { file_.WriteBlock(&byte, 4000000000U); }, "Attempt to write 4000000000 bytes when not open",
                      write, 0, path_);
    expectFileFailure([&] { file_.WriteBlock(bytes); }, "Attempt to write 7 bytes when not open", write, 0, path_);
    expectFileFailure([&] { file_.At(5000000000ULL); }, "Attempt to seek to 5000000000 when not open",
                      FileIO::UnexpectedError, 0, path_);
    EXPECT_FALSE(file_.At().IsSet());
    EXPECT_FALSE(file_.Remaining().IsSet());
    EXPECT_FALSE(file_.AtEnd());
    file_.Flush();
}

TEST_F(FileTest, AShortReadFailsAndKeepsTheFileOpen) {
    for (const unsigned int mode : {File::Read | 0U, File::Read | File::Text}) {
        writeFile(path_, "abc");
        file_.Open(mode);
        std::array<unsigned char, 5> buffer{};
        errno = 77;  // left over from something else
        expectFileFailure([&] { file_.ReadBlock(buffer.data(), 5); }, "Attempt to read 5 bytes, only read 3 bytes",
                          FileIO::ReadError, 0, path_);
        EXPECT_TRUE(file_.IsOpen());
        EXPECT_TRUE(file_.AtEnd());
        EXPECT_EQ(file_.At(), 3ULL);
        EXPECT_EQ(buffer[2], 'c');
        file_.At(0);
        file_.ReadBlock(buffer.data(), 3);
        EXPECT_FALSE(file_.AtEnd()) << "at the end, but no read has met it";
        file_.Close();
    }
}

TEST_F(FileTest, TransfersInTheWrongDirectionFail) {
    char byte = 'x';
    file_.Open(File::Write);
    expectFileFailure([&] { file_.ReadBlock(&byte, 1); }, "Attempt to read 1 bytes, only read 0 bytes",
                      FileIO::ReadError, EBADF, path_);
    file_.Close();
    file_.Open(File::Read);
    expectFileFailure([&] { file_.WriteBlock(&byte, 1); }, "Attempt to write 1 bytes, only wrote 0 bytes",
                      FileIO::WriteError, EBADF, path_);
}

TEST_F(FileTest, AFolderOpensButCannotBeRead) {
    const std::string folder = temp_ / "folder";
    fs::create_directory(folder);
    file_.SetPath(pathOf(folder));
    file_.Open(File::Read);
    struct stat status {};
    ASSERT_EQ(stat(folder.c_str(), &status), 0);
    EXPECT_EQ(file_.Size(), static_cast<unsigned long long>(status.st_size));
    char byte = 0;
    expectFileFailure([&] { file_.ReadBlock(&byte, 1); }, "Attempt to read 1 bytes, only read 0 bytes",
                      FileIO::ReadError, EISDIR, folder);
}

TEST_F(FileTest, AFullDiskShowsInALargeWrite) {
    file_.SetPath(pathOf("/dev/full"));
    file_.Open(File::Write);
    const std::vector<unsigned char> large(1 << 20);
    const auto caught = test::thrownBy([&] { file_.WriteBlock(large); });
    ASSERT_TRUE(caught);
    EXPECT_EQ(caught->GetErrorType(), FileIO::WriteError);
    EXPECT_EQ(caught->GetOSError(), ENOSPC);
    EXPECT_TRUE(file_.IsOpen());
}

TEST_F(FileTest, AFullDiskShowsAtTheEndWhateverFlushedBefore) {
    using Step = void (*)(File&);
    const Step steps[] = {
        [](File&) {},
        [](File& file) { file.Flush(); },
        [](File& file) { file.Size(); },
        [](File& file) { file.WriteBlock("b", 1); },
    };
    file_.SetPath(pathOf("/dev/full"));
    for (const unsigned int mode : {File::Write | 0U, File::Read | File::Write}) {
        for (const Step step : steps) {
            file_.Open(mode);
            file_.WriteBlock("a", 1);
            step(file_);
            expectFileFailure([&] { file_.Close(); }, "Close failed", FileIO::CloseError, ENOSPC, "/dev/full");
            EXPECT_FALSE(file_.IsOpen());
            file_.Close();
        }
    }
    file_.Open(File::Write);
    file_.WriteBlock("a", 1);
    file_.SetPath(pathOf(path_));
    file_.Open(File::Write);
    file_.Close();
    File dies(pathOf("/dev/full"));
    dies.Open(File::Write);
    dies.WriteBlock("a", 1);
}

TEST_F(FileTest, APipeHasNoPositionSoTextModeCannotCount) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const std::string path = "/dev/fd/" + std::to_string(ends[0]);
    ASSERT_EQ(write(ends[1], "abcdef", 6), 6);
    file_.SetPath(pathOf(path));

    std::array<char, 3> buffer{};
    file_.Open(File::Read);
    // The stream's buffer takes all that is in the pipe, so write again for the next one.
    file_.ReadBlock(buffer.data(), 3);
    EXPECT_EQ(std::string(buffer.data(), 3), "abc");
    EXPECT_FALSE(file_.At().IsSet());
    EXPECT_FALSE(file_.Remaining().IsSet());
    expectFileFailure([&] { file_.At(0); }, "Seek to 0 failed", FileIO::UnexpectedError, ESPIPE, path);
    file_.Close();

    ASSERT_EQ(write(ends[1], "abcdef", 6), 6);
    file_.Open(File::Read | File::Text);
    expectFileFailure([&] { file_.ReadBlock(buffer.data(), 3); }, "Attempt to read 3 bytes, only read 0 bytes",
                      FileIO::ReadError, 0, path);
    close(ends[0]);
    close(ends[1]);
}

/// A file as a text and a position.
struct Model {
    std::string text;
    std::size_t position = 0;
    bool appends = false;

    void write(const std::string& bytes) {
        position = appends ? text.size() : position;
        text.resize(std::max(text.size(), position));
        text.replace(position, bytes.size(), bytes);
        position += bytes.size();
    }
    std::string read(std::size_t count) {
        const std::string bytes = position < text.size() ? text.substr(position, count) : "";
        position += bytes.size();
        return bytes;
    }
};

TEST_F(FileTest, ReadingAndWritingAlternateFreely) {
    std::mt19937 engine(1);
    const auto random = [&](unsigned int below) { return static_cast<unsigned int>(engine()) % below; };
    for (const unsigned int mode : {File::Read | File::Write, File::ReadWrite | 0U, File::Read | File::Append}) {
        writeFile(path_, "");
        file_.Open(mode);
        Model model;
        model.appends = (mode & File::Append) != 0;
        for (int step = 0; step < 3000; ++step) {
            const unsigned int count = random(1000) == 0 ? 9000 : random(20) + 1;
            const unsigned int operation = random(10);
            if (operation < 4) {
                const std::string bytes(count, static_cast<char>('a' + step % 26));
                file_.WriteBlock(bytes.data(), count);
                model.write(bytes);
            } else if (operation < 8) {
                std::string bytes(count, '\0');
                const std::string expected = model.read(count);
                if (expected.size() == count) {
                    file_.ReadBlock(bytes.data(), count);
                } else {
                    ASSERT_THROW(file_.ReadBlock(bytes.data(), count), FileIO);
                }
                ASSERT_EQ(bytes.substr(0, expected.size()), expected) << "step " << step;
            } else {
                model.position = random(static_cast<unsigned int>(model.text.size()) + 10);
                file_.At(model.position);
            }
            ASSERT_EQ(file_.At(), model.position) << "step " << step;
            if (step % 50 == 0) {
                ASSERT_EQ(file_.Size(), model.text.size());
            }
        }
        file_.Close();
        ASSERT_EQ(readFile(path_), model.text);
    }
}

TEST_F(FileTest, VectorsAreReadAndWrittenWhole) {
    std::vector<unsigned char> bytes(100000);
    std::generate(bytes.begin(), bytes.end(), [n = 0]() mutable { return static_cast<unsigned char>(n++ * 7); });
    file_.Open(File::Write);
    file_.WriteBlock(bytes);
    file_.WriteBlock(bytes.data(), 10);
    file_.Close();
    std::vector<unsigned char> read(100000);
    file_.Open(File::Read);
    file_.ReadBlock(read);
    EXPECT_TRUE(read == bytes);
    EXPECT_EQ(file_.Remaining(), 10ULL);
}

}  // namespace
