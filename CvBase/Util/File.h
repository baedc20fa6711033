#pragma once

#include <cstdint>
#include <cstdio>
#include <vector>

#include "CvBase/Util/Exception/FileIO.h"
#include "CvBase/Util/FileTime.h"
#include "CvBase/common/common_checked_types.h"
#include "CvBase/common/common_path.h"
#include "CvBase/common/common_string.h"
#include "CvBase/common/common_types.h"

#pragma GCC visibility push(default)

namespace Util {

/// A file: its path, and a stream while it is open.
///
/// An operation that fails throws Util::Exception::FileIO with the file's path, the kind of failure and, where there is
/// one, errno; queries return false, 0 or an unset value instead. A transfer that moves fewer bytes than asked for is a
/// failure, and the file stays open at whatever position it reached.
///
/// The path goes to the system as FilePath::ToString() gives it: ".." is folded in the text first, and a name that
/// holds a backslash cannot be addressed. Symbolic links are followed except where noted.
class File : private noncopyable {
public:
    /// What Open() takes, combined by |.
    enum Mode : unsigned int {
        Read = 0x02,       ///< read
        Write = 0x04,      ///< write
        ReadWrite = 0x08,  ///< read and write
        Append = 0x10,     ///< write at the end
        Truncate = 0x20,   ///< with reading and writing: begin with an empty file; else without effect
        Text = 0x40        ///< text stream; ReadBlock() then counts by the position
    };

    /// The empty path, closed.
    File();

    /// The file at `path`, closed, whether it exists or not.
    explicit File(const FilePath& path);

    /// Closes the file and ignores errors. A full disk may be noticed only then; call Close() where that matters.
    ~File();

    /// Closes an open stream, ignoring errors, and takes the path.
    void SetPath(const FilePath& path);

    /// Whether there is an open stream.
    [[nodiscard]] bool IsOpen() const { return stream_ != nullptr; }

    /// @name Opening and closing
    /// @{

    /// Opens the file as fopen() does with the mode text that `mode` stands for, with "t" for Text and "b" otherwise.
    /// Every combination is accepted:
    /// - Read, or none of the bits that read or write: "r";
    /// - Write: "w"; Append with or without Write: "a";
    /// - Read and Write: "r+"; Read and Append: "a+"; either with Truncate: "w+";
    /// - ReadWrite without Read: "w+", even with Append, so the file is emptied; ReadWrite with Read: as Read and
    /// Write.
    ///
    /// Opening a named pipe waits for its other end; a folder opens for reading, but nothing can be read from it. If
    /// the file is open already, its old stream is lost and never closed: call Close() first. Throws OpenError, and
    /// then nothing has changed.
    void Open(unsigned int mode);

    /// Closes an open file; it counts as closed even when this throws CloseError.
    void Close();

    /// Gives buffered bytes to the system; does nothing on a closed file. If this fails, the next Close() throws.
    void Flush();

    /// @}
    /// @name Transfers
    /// On a file open for both, reading and writing may alternate freely.
    /// @{

    /// Reads exactly `count` bytes. Nothing happens when `count` is 0 or `buffer` is null, even on a closed file.
    /// Throws ReadError when the file is not open or has fewer bytes left. In text mode the bytes read are counted by
    /// the positions before and after, so reading from a pipe, which has no position, fails.
    void ReadBlock(char* buffer, unsigned int count);
    void ReadBlock(unsigned char* buffer, unsigned int count);

    /// Reads as many bytes as `buffer` holds.
    void ReadBlock(std::vector<unsigned char>& buffer);

    /// Writes `count` bytes. Nothing happens when `count` is 0 or `buffer` is null, even on a closed file. Throws
    /// WriteError. Bytes go through a buffer, so a full disk may show only at Close().
    void WriteBlock(const char* buffer, unsigned int count);
    void WriteBlock(const unsigned char* buffer, unsigned int count);
    void WriteBlock(const std::vector<unsigned char>& buffer);

    /// @}
    /// @name Position and size, in bytes
    /// @{

    /// The position; unset when the file is not open or has none (a pipe). A file open for "a" begins at its size, one
    /// open for "a+" at 0.
    [[nodiscard]] checked_value<unsigned long long> At() const;

    /// Moves to `position`, which may lie past the end. Throws UnexpectedError when the file is not open or the
    /// system refuses, as it does for 2^63 and above.
    void At(unsigned long long position);

    /// The size, with what is still buffered; unset when the path is empty or the size cannot be read.
    [[nodiscard]] checked_value<unsigned long long> Size() const;

    /// The size minus the position; unset when the file is not open, either is unknown, or the position is past the
    /// end.
    [[nodiscard]] checked_value<unsigned long long> Remaining() const;

    /// Whether a read has met the end of the open file; being at the end is not enough. False on a closed file.
    [[nodiscard]] bool AtEnd() const;

    /// @}
    /// @name The file at the path, open or not
    /// @{

    /// Whether anything, a folder too, is at the path. False as well when a folder on the way cannot be searched or a
    /// link leads nowhere.
    [[nodiscard]] bool Exists() const;

    /// Whether the real user of the process may read, or write, what is at the path; false when there is nothing.
    [[nodiscard]] bool IsReadable() const;
    [[nodiscard]] bool IsWritable() const;

    /// The four-character type code of the file's Finder information, its first character in the highest byte; 0 when
    /// there is no file or no information. For a folder it is meaningless.
    [[nodiscard]] std::uint32_t GetOSXFileType() const;

    /// Closes the file, which may throw CloseError before anything is removed, and removes what is at the path: a file,
    /// a link itself, or an empty folder. Throws RemoveError if `throwOnError`, or else ignores the failure.
    void Remove(bool throwOnError);

    /// Gives the file at `from` the path `to`, in place of a file there. Where the volume can, the two files are
    /// exchanged first and the old one removed then, so that `to` exists at every moment. When both paths lead to one
    /// file, it is not lost: `from` is removed if it is a second name of the file or a link to it, and nothing happens
    /// if both are the same name. Throws RenameError naming `from`, and then both files are as they were. Renaming
    /// across volumes always fails.
    static void Rename(const FilePath& from, const FilePath& to);

    /// Moves the item at the absolute path `path` to the user's Trash, waiting until it is there. Never throws; when
    /// the item cannot be moved, nothing happens. `path` is used as it is given, and a symbolic link itself is moved,
    /// not what it leads to.
    static void Recycle(const String& path);

    /// Sets the permission bits (07777). Throws UnexpectedError, without an errno.
    void SetMode(unsigned short permissions);

    /// Reads or sets the times of use and change. Throws UnexpectedError, without an errno. `out` must not be null.
    void GetTime(FileTime* out);
    void SetTime(const FileTime& time);

    /// @}

private:
    /// Reads `count` bytes at most: how many came, and errno.
    struct Transfer {
        unsigned int count;
        int error;
    };
    Transfer read(char* buffer, unsigned int count);

    /// Lets the next transfer go in either direction.
    void beginTransfer();

    /// Keeps the errno of a flush that failed where nothing is thrown, for Close() to throw.
    void noteFlush(bool succeeded) const;

    /// Forgets the stream, without closing it.
    void forgetStream();

    /// Renames as the system does, which replaces a link at `to` itself. Throws RenameError naming `from`.
    static void renameEntry(const FilePath& from, const FilePath& to);

    FilePath path_;
    std::FILE* stream_ = nullptr;
    unsigned int mode_ = 0;
    std::uint8_t opened_ = 0;
    [[maybe_unused]] std::int32_t spare_ = 0;  ///< keeps the object's layout
    mutable int flushError_ = 0;
};

}  // namespace Util

#pragma GCC visibility pop
