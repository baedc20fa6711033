#include "CvBase/common/common_exception_base.h"

#include "CvBase/Util/Exception/DataStreamIO.h"
#include "CvBase/Util/Exception/FileIO.h"
#include "tests/support/Text.h"

namespace {

using namespace test;
using Util::Exception::DataStreamIO;
using Util::Exception::FileIO;

/// Throws `exception` through the common piece and gives back what a handler of its own type and one of the root see.
template <class E>
std::string thrown(const E& exception, const char* unit, int line) {
    EXPECT_THROW(Exception::Throw(exception, unit, line), E);
    try {
        Exception::Throw(exception, unit, line);
    } catch (const Exception::Base& caught) {
        EXPECT_EQ(str(caught.GetSourceFile()), unit);
        EXPECT_EQ(caught.GetLine(), line);
        EXPECT_EQ(caught.GetOSErrorAtThrow(), 0);
        return str(caught.ToString());
    }
}

TEST(ExceptionTest, BeforeTheThrowTheSiteIsUnknown) {
    const Exception::Base exception("Broken"), null{String()};
    EXPECT_TRUE(exception.GetSourceFile().IsEmpty());
    EXPECT_EQ(exception.GetLine(), -1);
    EXPECT_EQ(exception.GetOSErrorAtThrow(), -1);
    EXPECT_EQ(str(exception.ToString()), "Base:\n\tBroken\n\t (-1): Thrown, GetLastError(): 0\n");
    EXPECT_EQ(str(null.ToString()), "Base:\n\t\n\t (-1): Thrown, GetLastError(): 0\n");
}

TEST(ExceptionTest, Texts) {
    const std::string base = "Base:\n\tM\n\tUtil/X (7): Thrown, GetLastError(): 0\n";
    const FilePath file("/a//b", false);
    const FolderPath folder("/c", false);
    EXPECT_EQ(thrown(Exception::Base("M"), "Util/X", 7), base);
    EXPECT_EQ(thrown(DataStreamIO("M"), "Util/X", 7), base + "\nDataStreamIO\n");
    EXPECT_EQ(thrown(FileIO("M", file, FileIO::ReadError, 5), "Util/X", 7), base + "\nFileIO:\n/a//b: Read error");
    EXPECT_EQ(thrown(FileIO("M", folder, FileIO::ReadError, 5), "Util/X", 7), base + "\nFileIO:\n/c/: Read error");

    const char* const kinds[] = {"File not found", "Open error",   "Read error",       "Write error",   "Close error",
                                 "Remove error",   "Rename error", "Unexpected error", " Unknown error"};
    for (const int kind : {0, 1, 2, 3, 4, 5, 6, 7, 8, -1, INT_MIN}) {
        const FileIO exception("M", FilePath(), static_cast<FileIO::ErrorType>(kind), 0);
        EXPECT_EQ(thrown(exception, "Util/X", 7), base + "\nFileIO:\n: " + kinds[kind < 0 ? 8 : kind]);
    }

    // A placeholder in the name of the source takes the next argument.
    EXPECT_EQ(thrown(Exception::Base("%1"), "a%1b", 7), "Base:\n\t%1\n\ta7b (0): Thrown, GetLastError(): %3\n");
    EXPECT_EQ(thrown(Exception::Base("M"), "%9", 7), "Base:\n\tM\n\t%9 (7): Thrown, GetLastError(): 0\n");
}

}  // namespace
