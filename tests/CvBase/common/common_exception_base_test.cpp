#include "CvBase/common/common_exception_base.h"

#include <gmock/gmock.h>

#include <climits>
#include <string>

#include "CvBase/Util/Exception/DataStreamIO.h"
#include "CvBase/Util/Exception/FileIO.h"

namespace {

using Util::Exception::DataStreamIO;
using Util::Exception::FileIO;

static_assert(sizeof(FileIO::ErrorType) == 4);

std::string str(const String& text) {
    return std::string(text.CStr(), text.Length());
}

/// Throws `exception` through the common piece and gives back what a handler of the root sees.
template <class E>
std::string thrown(const E& exception, const char* unit, int line) {
    try {
        Exception::Throw(exception, unit, line);
    } catch (const Exception::Base& caught) {
        return str(caught.ToString());
    }
}

TEST(ExceptionTest, BeforeTheThrowTheSiteIsUnknown) {
    const Exception::Base exception("Broken");
    EXPECT_EQ(str(exception.GetMessage()), "Broken");
    EXPECT_TRUE(exception.GetSourceFile().IsEmpty());
    EXPECT_EQ(exception.GetLine(), -1);
    EXPECT_EQ(exception.GetOSErrorAtThrow(), -1);
    EXPECT_EQ(str(exception.ToString()), "Base:\n\tBroken\n\t (-1): Thrown, GetLastError(): 0\n");
}

TEST(ExceptionTest, ThrowingRecordsTheSiteAndKeepsTheType) {
    try {
        Exception::Throw(FileIO("Open failed", FilePath("/a/b", false), FileIO::OpenError, 13), "Util/File", 42);
        FAIL();
    } catch (const FileIO& caught) {
        EXPECT_EQ(str(caught.GetMessage()), "Open failed");
        EXPECT_EQ(str(caught.GetSourceFile()), "Util/File");
        EXPECT_EQ(caught.GetLine(), 42);
        EXPECT_EQ(caught.GetOSErrorAtThrow(), 0);
        EXPECT_EQ(str(caught.GetFile().GetInternal()), "/a/b");
        EXPECT_TRUE(caught.GetFolder().IsEmpty());
        EXPECT_EQ(caught.GetErrorType(), FileIO::OpenError);
        EXPECT_EQ(caught.GetOSError(), 13);
    }
    EXPECT_THROW(Exception::Throw(DataStreamIO("x"), "Util/ByteStream", 74), DataStreamIO);
}

TEST(ExceptionTest, Texts) {
    const std::string base = "Base:\n\tM\n\tUtil/X (7): Thrown, GetLastError(): 0\n";
    const FilePath file("/a//b", false);
    const FolderPath folder("/c", false);

    EXPECT_EQ(thrown(Exception::Base("M"), "Util/X", 7), base);
    EXPECT_EQ(thrown(DataStreamIO("M"), "Util/X", 7), base + "\nDataStreamIO\n");
    EXPECT_EQ(thrown(FileIO("M", file, FileIO::ReadError, 5), "Util/X", 7), base + "\nFileIO:\n/a//b: Read error");
    EXPECT_EQ(thrown(FileIO("M", folder, FileIO::ReadError, 5), "Util/X", 7), base + "\nFileIO:\n/c/: Read error");
    EXPECT_EQ(thrown(FileIO("M", FilePath(), FileIO::ReadError, 5), "Util/X", 7), base + "\nFileIO:\n: Read error");
}

TEST(ExceptionTest, KindTexts) {
    struct Row {
        int kind;
        const char* text;
    };
    const Row rows[] = {
        {0, "File not found"}, {1, "Open error"},      {2, "Read error"},           {3, "Write error"},
        {4, "Close error"},    {5, "Remove error"},    {6, "Rename error"},         {7, "Unexpected error"},
        {8, " Unknown error"}, {-1, " Unknown error"}, {INT_MAX, " Unknown error"}, {INT_MIN, " Unknown error"},
    };
    for (const Row& row : rows) {
        const FileIO exception("M", FilePath(), static_cast<FileIO::ErrorType>(row.kind), 0);
        EXPECT_EQ(str(exception.ToString()),
                  "Base:\n\tM\n\t (-1): Thrown, GetLastError(): 0\n\nFileIO:\n: " + std::string(row.text));
    }
}

TEST(ExceptionTest, APlaceholderInTheSourceNameTakesTheNextArgument) {
    EXPECT_EQ(thrown(Exception::Base("%1"), "a%1b", 7), "Base:\n\t%1\n\ta7b (0): Thrown, GetLastError(): %3\n");
    EXPECT_EQ(thrown(Exception::Base("M"), "%9", 7), "Base:\n\tM\n\t%9 (7): Thrown, GetLastError(): 0\n");
}

TEST(ExceptionTest, NullTextsRender) {
    const Exception::Base null{String()};
    EXPECT_EQ(str(null.ToString()), "Base:\n\t\n\t (-1): Thrown, GetLastError(): 0\n");
}

TEST(ExceptionTest, CopiesAreEqualAndShareTheirTexts) {
    FileIO original("M", FolderPath("/c", false), FileIO::WriteError, 28);
    original.SetThrowSite("Util/X", 7);
    const FileIO copy = original;
    EXPECT_EQ(str(copy.ToString()), str(original.ToString()));
    EXPECT_EQ(copy.GetOSError(), 28);
    EXPECT_EQ(copy.GetMessage().CStr(), original.GetMessage().CStr());
}

}  // namespace
