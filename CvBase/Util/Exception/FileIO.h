#pragma once

#include <cstdint>

#include "CvBase/common/common_exception_base.h"
#include "CvBase/common/common_path.h"

namespace Util {
namespace Exception {

/// A failure of a file or folder operation.
class __attribute__((visibility("default"))) FileIO : public ::Exception::Base {
public:
    /// What failed. Other values are allowed and render as " Unknown error".
    enum ErrorType : std::int32_t {
        FileNotFound = 0,
        OpenError = 1,
        ReadError = 2,
        WriteError = 3,
        CloseError = 4,
        RemoveError = 5,
        RenameError = 6,
        UnexpectedError = 7
    };

    /// `osError` is the errno value seen at the failure, or 0 where there is none.
    FileIO(const String& message, const FilePath& file, ErrorType kind, int osError);
    FileIO(const String& message, const FolderPath& folder, ErrorType kind, int osError);
    FileIO(const FileIO&) = default;
    FileIO& operator=(const FileIO&) = default;
    ~FileIO() override;

    /// The base's lines, then the path concerned and the kind.
    String ToString() const override;

    /// The file concerned; empty when the failure concerns a folder.
    const FilePath& GetFile() const { return file_; }

    /// The folder concerned; empty when the failure concerns a file.
    const FolderPath& GetFolder() const { return folder_; }

    ErrorType GetErrorType() const { return kind_; }

    /// The errno value seen at the failure, or 0 where there was none. It is no part of ToString().
    int GetOSError() const { return osError_; }

private:
    FilePath file_;
    FolderPath folder_;
    ErrorType kind_;
    int osError_;
};

}  // namespace Exception
}  // namespace Util
