#pragma once

// What tests of files and folders share.

#include "CvBase/Util/Dir.h"
#include "CvBase/Util/Exception/FileIO.h"
#include "CvBase/Util/File.h"
#include "tests/support/Surroundings.h"
#include "tests/support/Test.h"
#include "tests/support/Text.h"

namespace test {

using Util::Dir;
using Util::File;
using Util::Exception::FileIO;

inline FilePath pathOf(const std::string& path) {
    return FilePath(path.c_str(), false);
}

inline Dir dirAt(const std::string& path) {
    return Dir(FolderPath(path.c_str(), false));
}

/// Expects that `action` throws a FileIO that concerns the stored text `file` or `folder`, out of `line` of `unit`, or
/// of any line when that is 0.
inline void expectFileIO(const std::function<void()>& action, const std::string& message, FileIO::ErrorType kind,
                         int osError, const std::string& file, const std::string& folder, const std::string& unit,
                         int line) {
    SCOPED_TRACE(message);
    try {
        action();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const FileIO& caught) {
        EXPECT_EQ(str(caught.GetMessage()), message);
        EXPECT_EQ(caught.GetErrorType(), kind);
        EXPECT_EQ(caught.GetOSError(), osError);
        EXPECT_EQ(str(caught.GetFile().GetInternal()), file);
        EXPECT_EQ(str(caught.GetFolder().GetInternal()), folder);
        EXPECT_EQ(str(caught.GetSourceFile()), unit);
        EXPECT_TRUE(line == 0 ? caught.GetLine() > 0 : caught.GetLine() == line) << caught.GetLine();
        EXPECT_EQ(caught.GetOSErrorAtThrow(), 0);
    }
}

inline void expectFileFailure(const std::function<void()>& action, const std::string& message, FileIO::ErrorType kind,
                              int osError, const std::string& path) {
    expectFileIO(action, message, kind, osError, path, "", "Util/File", 0);
}

inline void expectFolderFailure(const std::function<void()>& action, const std::string& message, FileIO::ErrorType kind,
                                int line, const std::string& folder) {
    expectFileIO(action, message, kind, 0, "", folder, "Util/Dir_mac", line);
}

/// A file that is not there yet, in a folder of its own.
class FileFixture : public testing::Test {
protected:
    /// Expects that `action` throws a FileIO about file_.
    void expectFailure(const std::function<void()>& action, const std::string& message, FileIO::ErrorType kind,
                       int osError) const {
        expectFileFailure(action, message, kind, osError, concerned_);
    }

    /// Makes file_ the file at `path`.
    void setPath(const std::string& path) {
        concerned_ = path;
        file_.SetPath(pathOf(path));
    }

    const TempDir temp_;
    const std::string path_ = temp_ / "file";
    File file_{pathOf(path_)};

private:
    std::string concerned_ = path_;
};

/// Works in a folder of its own, with HOME to change.
class DirFixture : public testing::Test {
protected:
    DirFixture() { fs::current_path(temp_.path()); }

    const TempDir temp_;

private:
    const Surroundings surroundings_;
};

}  // namespace test
