#include "CvBase/Util/Exception/FileIO.h"

namespace Util {
namespace Exception {

namespace {

const char* kindText(FileIO::ErrorType kind) {
    switch (kind) {
        case FileIO::FileNotFound:
            return "File not found";
        case FileIO::OpenError:
            return "Open error";
        case FileIO::ReadError:
            return "Read error";
        case FileIO::WriteError:
            return "Write error";
        case FileIO::CloseError:
            return "Close error";
        case FileIO::RemoveError:
            return "Remove error";
        case FileIO::RenameError:
            return "Rename error";
        case FileIO::UnexpectedError:
            return "Unexpected error";
    }
    return " Unknown error";  // the leading blank is part of the text that users of the logs match
}

}  // namespace

FileIO::FileIO(const String& message, const FilePath& file, ErrorType kind, int osError)
    : Base(message), file_(file), kind_(kind), osError_(osError) {}

FileIO::FileIO(const String& message, const FolderPath& folder, ErrorType kind, int osError)
    : Base(message), folder_(folder), kind_(kind), osError_(osError) {}

FileIO::~FileIO() = default;

String FileIO::ToString() const {
    const String& path = folder_.IsEmpty() ? file_.GetInternal() : folder_.GetInternal();
    return Base::ToString() + "\nFileIO:\n" + path + ": " + kindText(kind_);
}

}  // namespace Exception
}  // namespace Util
