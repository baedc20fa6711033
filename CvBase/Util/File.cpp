#include "CvBase/Util/File.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>

namespace Util {

using Exception::FileIO;

namespace {

/// Throws as coming from `line` of this file. `osError` must have been saved before `message` was made, which can
/// change errno.
[[noreturn]] void fail(const String& message, const FilePath& file, FileIO::ErrorType kind, int osError, int line) {
    ::Exception::Throw(FileIO(message, file, kind, osError), "Util/File", line);
}

bool reads(unsigned int mode) {
    return (mode & (File::Read | File::ReadWrite)) != 0;
}

bool writes(unsigned int mode) {
    return (mode & (File::Write | File::ReadWrite | File::Append)) != 0;
}

/// What fopen() calls `mode`.
std::string modeText(unsigned int mode) {
    const bool appends = (mode & File::Append) != 0;
    const char* suffix = (mode & File::Text) != 0 ? "t" : "b";
    if (!writes(mode)) {
        return std::string("r") + suffix;
    }
    if (!reads(mode)) {
        return std::string(appends ? "a" : "w") + suffix;
    }
    const bool keepsContents = (mode & File::Read) != 0 && (mode & File::Truncate) == 0;
    if (!keepsContents) {
        return std::string("w+") + suffix;
    }
    return std::string(appends ? "a+" : "r+") + suffix;
}

/// Calls `transfer(bytes, count)` for pieces of `buffer` that a 32-bit count can name.
template <class Buffer, class Transfer>
void inPieces(Buffer& buffer, const Transfer& transfer) {
    constexpr std::size_t LARGEST = std::numeric_limits<unsigned int>::max();
    for (std::size_t done = 0; done < buffer.size();) {
        const std::size_t count = std::min(buffer.size() - done, LARGEST);
        transfer(buffer.data() + done, static_cast<unsigned int>(count));
        done += count;
    }
}

checked_value<unsigned long long> sizeOf(const struct stat& status) {
    return static_cast<unsigned long long>(status.st_size);
}

bool isAccessible(const FilePath& path, int mode) {
    return access(path.ToString().CStr(), mode) == 0;
}

}  // namespace

File::File() = default;

File::File(const FilePath& path) : path_(path) {}

File::~File() {
    try {
        Close();
    } catch (...) {  // nobody is left to tell
    }
}

void File::SetPath(const FilePath& path) {
    if (stream_ != nullptr) {
        static_cast<void>(std::fclose(stream_));  // a caller who needs to know calls Close()
        forgetStream();
    }
    path_ = path;
}

void File::Open(unsigned int mode) {
    const String path = path_.ToString();
    std::FILE* stream = std::fopen(path.CStr(), modeText(mode).c_str());
    if (stream == nullptr) {
        const int error = errno;
        fail("Error opening file", path_, FileIO::OpenError, error, __LINE__);
    }
    stream_ = stream;
    mode_ = mode;
    opened_ = 1;
    flushError_ = 0;  // that of a stream that was still held
}

void File::Close() {
    if (stream_ == nullptr) {
        return;
    }
    const bool closed = std::fclose(stream_) == 0 && flushError_ == 0;
    const int error = flushError_ != 0 ? flushError_ : errno;
    forgetStream();
    if (!closed) {
        fail("Close failed", path_, FileIO::CloseError, error, __LINE__);
    }
}

void File::forgetStream() {
    stream_ = nullptr;
    mode_ = 0;
    opened_ = 0;
    flushError_ = 0;
}

void File::Flush() {
    if (stream_ != nullptr) {
        noteFlush(std::fflush(stream_) == 0);
    }
}

void File::noteFlush(bool succeeded) const {
    // A stream drops what it could not write, and its closing succeeds.
    if (!succeeded && flushError_ == 0 && writes(mode_) && errno != ESPIPE) {
        flushError_ = errno;
    }
}

void File::beginTransfer() {
    if (reads(mode_) && writes(mode_)) {
        // C lets a stream change between reading and writing only at such a point. What cannot be positioned, a
        // terminal, needs none.
        noteFlush(fseeko(stream_, 0, SEEK_CUR) == 0);
    }
}

File::Transfer File::read(char* buffer, unsigned int count) {
    const bool isText = (mode_ & Text) != 0;
    beginTransfer();
    const off_t before = isText ? ftello(stream_) : 0;
    errno = 0;
    const std::size_t got = std::fread(buffer, 1, count, stream_);
    const int error = errno;
    if (!isText) {
        return {static_cast<unsigned int>(got), error};
    }
    // A text stream may give other bytes than it takes from the file; only the position tells how far it came.
    return {static_cast<unsigned int>(ftello(stream_)) - static_cast<unsigned int>(before), error};
}

void File::ReadBlock(char* buffer, unsigned int count) {
    if (count == 0 || buffer == nullptr) {
        return;
    }
    if (stream_ == nullptr) {
        fail(String("Attempt to read %1 bytes when not open").Arg(count), path_, FileIO::ReadError, 0, __LINE__);
    }
    const Transfer done = read(buffer, count);
    if (done.count != count) {
        fail(String("Attempt to read %1 bytes, only read %2 bytes").Arg(count).Arg(done.count), path_,
             FileIO::ReadError, done.error, __LINE__);
    }
}

void File::ReadBlock(unsigned char* buffer, unsigned int count) {
    ReadBlock(reinterpret_cast<char*>(buffer), count);
}

void File::ReadBlock(std::vector<unsigned char>& buffer) {
    inPieces(buffer, [this](unsigned char* bytes, unsigned int count) { ReadBlock(bytes, count); });
}

void File::WriteBlock(const char* buffer, unsigned int count) {
    if (count == 0 || buffer == nullptr) {
        return;
    }
    if (stream_ == nullptr) {
        fail(String("Attempt to write %1 bytes when not open").Arg(count), path_, FileIO::WriteError, 0, __LINE__);
    }
    beginTransfer();
    errno = 0;
    const std::size_t written = std::fwrite(buffer, 1, count, stream_);
    const int error = errno;
    if (written < count) {
        const unsigned int partial = static_cast<unsigned int>(written);
        fail(String("Attempt to write %1 bytes, only wrote %2 bytes").Arg(count).Arg(partial), path_,
             FileIO::WriteError, error, __LINE__);
    }
}

void File::WriteBlock(const unsigned char* buffer, unsigned int count) {
    WriteBlock(reinterpret_cast<const char*>(buffer), count);
}

void File::WriteBlock(const std::vector<unsigned char>& buffer) {
    inPieces(buffer, [this](const unsigned char* bytes, unsigned int count) { WriteBlock(bytes, count); });
}

checked_value<unsigned long long> File::At() const {
    const off_t position = stream_ != nullptr ? ftello(stream_) : -1;
    return position >= 0 ? static_cast<unsigned long long>(position) : checked_value<unsigned long long>();
}

void File::At(unsigned long long position) {
    if (stream_ == nullptr) {
        fail(String("Attempt to seek to %1 when not open").Arg(position), path_, FileIO::UnexpectedError, 0, __LINE__);
    }
    if (fseeko(stream_, static_cast<off_t>(position), SEEK_SET) != 0) {
        const int error = errno;
        fail(String("Seek to %1 failed").Arg(position), path_, FileIO::UnexpectedError, error, __LINE__);
    }
}

checked_value<unsigned long long> File::Size() const {
    struct stat status {};
    if (path_.IsEmpty()) {
        return {};
    }
    if (stream_ == nullptr) {
        return stat(path_.ToString().CStr(), &status) == 0 ? sizeOf(status) : checked_value<unsigned long long>();
    }
    if (writes(mode_)) {
        noteFlush(std::fflush(stream_) == 0);
    }
    return fstat(fileno(stream_), &status) == 0 ? sizeOf(status) : checked_value<unsigned long long>();
}

checked_value<unsigned long long> File::Remaining() const {
    const checked_value<unsigned long long> size = Size();
    const checked_value<unsigned long long> position = At();
    if (!size.IsSet() || !position.IsSet() || position.Value() > size.Value()) {
        return {};
    }
    return size.Value() - position.Value();
}

bool File::AtEnd() const {
    return stream_ != nullptr && std::feof(stream_) != 0;
}

bool File::Exists() const {
    return isAccessible(path_, F_OK);
}

bool File::IsReadable() const {
    return isAccessible(path_, R_OK);
}

bool File::IsWritable() const {
    return isAccessible(path_, W_OK);
}

void File::Remove(bool throwOnError) {
    Close();
    const String path = path_.ToString();
    const bool removed = std::remove(path.CStr()) == 0;
    const int error = errno;
    if (!removed && throwOnError) {
        fail("Remove failed", path_, FileIO::RemoveError, error, __LINE__);
    }
}

void File::renameEntry(const FilePath& from, const FilePath& to) {
    const String source = from.ToString();
    const String target = to.ToString();
    if (std::rename(source.CStr(), target.CStr()) != 0) {
        const int error = errno;
        fail("Rename failed", from, FileIO::RenameError, error, __LINE__);
    }
}

void File::SetMode(unsigned short permissions) {
    if (chmod(path_.ToString().CStr(), permissions) != 0) {
        fail("Error modifying file permissions", path_, FileIO::UnexpectedError, 0, __LINE__);
    }
}

void File::GetTime(FileTime* out) {
    if (!ReadFileTime(path_.ToString(), *out)) {
        fail("Error getting file time", path_, FileIO::UnexpectedError, 0, __LINE__);
    }
}

void File::SetTime(const FileTime& time) {
    if (!WriteFileTime(path_.ToString(), time)) {
        fail("Error setting file time", path_, FileIO::UnexpectedError, 0, __LINE__);
    }
}

}  // namespace Util
