#pragma once

#include <cstdint>

#include "CvBase/common/common_exception_base.h"
#include "CvBase/common/common_path.h"

#pragma GCC visibility push(default)

namespace Util {
namespace Exception {

/// A failed operation on a file or a folder. It names exactly one of the two.
///
///     try {
///         file.Open(Util::File::Read);
///     } catch (const Util::Exception::FileIO& failure) {
///         if (failure.GetOSError() == ENOENT) { ... }
///     }
///
/// Its source unit is "Util/File" or, for folders, "Util/Dir_mac"; the line names the one place there that throws.
class FileIO : public ::Exception::Base {
public:
    /// What was attempted when it failed. Other values are allowed and render as " Unknown error".
    enum ErrorType : std::int32_t {
        FileNotFound = 0,    ///< never thrown by the library, which reports a missing file as OpenError
        OpenError = 1,       ///< opening
        ReadError = 2,       ///< reading, also fewer bytes than asked for
        WriteError = 3,      ///< writing, or making a folder
        CloseError = 4,      ///< closing: something written before may be lost
        RemoveError = 5,     ///< removing
        RenameError = 6,     ///< renaming
        UnexpectedError = 7  ///< seeking, times, permissions
    };

    /// `message` says in words what failed, `file` or `folder` is what it concerns, and `osError` is the errno value
    /// seen at the failure, or 0 where there is none.
    FileIO(const String& message, const FilePath& file, ErrorType kind, int osError);
    FileIO(const String& message, const FolderPath& folder, ErrorType kind, int osError);

    /// Shares the texts, and throws nothing.
    FileIO(const FileIO&) = default;
    FileIO& operator=(const FileIO&) = default;

    ~FileIO() override;

    /// The base's lines, then the path concerned, as it was made, and the kind in words.
    [[nodiscard]] String ToString() const override;

    /// The file concerned; empty when the failure concerns a folder.
    [[nodiscard]] const FilePath& GetFile() const { return file_; }

    /// The folder concerned; empty when the failure concerns a file.
    [[nodiscard]] const FolderPath& GetFolder() const { return folder_; }

    /// What was attempted.
    [[nodiscard]] ErrorType GetErrorType() const { return kind_; }

    /// The errno value seen at the failure, or 0 where there was none. ToString() leaves it out.
    [[nodiscard]] int GetOSError() const { return osError_; }

private:
    FilePath file_;
    FolderPath folder_;
    ErrorType kind_;
    int osError_;
};

}  // namespace Exception
}  // namespace Util

#pragma GCC visibility pop
