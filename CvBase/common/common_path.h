#pragma once

#include "CvBase/common/common_string.h"

class FolderPath;

/// \file
/// The names of files and folders, as values. A path is text: nothing here asks the file system whether it exists.
///
/// Making a path turns it into an absolute one and changes nothing else; its text is folded when it is compared and
/// when ToString() gives it to the system. Four things to know before using one:
///
/// - ".." is folded in the text, together with the name before it, so after a symbolic link it leads elsewhere than the
///   system's own ".." does. The folding is a single pass: of two ".." in a row only the first is folded, and a ".."
///   right after the root takes the root away ("/../a" becomes the relative "a"). Do not pass unchecked text that holds
///   ".." to anything that removes, renames or creates.
/// - A backslash is a separator like "/" everywhere; a name that holds one cannot be addressed.
/// - Comparisons ignore the case of A to Z: on a volume that tells cases apart, two different files can compare equal.
/// - "." components stay.
///
/// The text ends at its first NUL byte wherever it is folded.

/// The name of a file.
class FilePath {
public:
    /// No path.
    FilePath() = default;

    /// As construct(). `flag` has no effect on this platform.
    FilePath(const String& path, bool flag);

    /// Makes this the path of `path` (UTF-8):
    /// - blank or null text gives no path;
    /// - a leading "~/" (or "~" alone) becomes the value of HOME and "/", or "/" when HOME is not set; "~user" is an
    ///   ordinary name;
    /// - other text without a leading separator gets the working folder and "/" in front, or "/" alone when the working
    ///   folder cannot be read or is longer than 1022 bytes;
    /// - everything else is kept as it is, blanks included.
    /// The result is relative only where HOME is. `flag` has no effect on this platform.
    void construct(const String& path, bool flag);

    bool IsEmpty() const { return path_.IsEmpty(); }

    /// The text as made by construct(), not folded.
    const String& GetInternal() const { return path_; }

    /// Whether `path` is not empty and begins with neither "/" nor a backslash. A leading "~" counts as relative.
    static bool IsRelative(const String& path);

    /// The last component, without trailing separators; empty for the root.
    String GetFilename() const;

    /// What follows the last "." of the file name: "gz" of "archive.tar.gz", "profile" of ".profile"; empty without
    /// one.
    String GetExtension() const;

    /// What precedes the last "." of the file name: "archive.tar", and nothing of ".profile"; the whole name without
    /// one.
    String GetBaseName() const;

    /// The folder that holds the file. Empty for no path; the working folder, as ".", for a path of separators alone.
    FolderPath GetFolder() const;

    /// The text to give to the system: folded, with "/" as the separator, without a trailing one. Empty for no path and
    /// for the root.
    String ToString() const;

    /// Order and equality of the folded texts, byte by byte, ignoring the case of A to Z. No path equals "/".
    bool operator<=(const FilePath& other) const;
    bool operator<(const FilePath& other) const;

private:
    String path_;
};

bool operator==(const FilePath& a, const FilePath& b);

/// The name of a folder. Its text ends with a separator unless it is empty.
class FolderPath {
public:
    /// No path.
    FolderPath() = default;

    /// As FilePath::construct(), with "/" appended to a path that does not end with "/" or a backslash.
    FolderPath(const String& path, bool flag);

    bool IsEmpty() const { return path_.IsEmpty(); }

    /// The text as made, with its trailing separator, not folded.
    const String& GetInternal() const { return path_; }

    /// As FilePath::IsRelative.
    static bool IsRelative(const String& path);

    /// Whether there is no folder above: no path, or one that folds to "/" or "./".
    bool IsTopLevel() const;

    /// The folder's own name; empty for a top-level one.
    String GetFolderName() const;

    /// The folder that holds this one; empty for a top-level one.
    FolderPath GetParent() const;

    /// The text to give to the system: folded, with "/" as the separator and at the end. No path gives "/".
    String ToString() const;

    /// As for FilePath.
    bool operator<=(const FolderPath& other) const;
    bool operator<(const FolderPath& other) const;

private:
    String path_;
};

bool operator==(const FolderPath& a, const FolderPath& b);

/// The file `name` in `folder`: both texts one after the other, as FilePath::construct() takes them. An empty folder
/// makes `name` relative to the working folder.
FilePath operator+(const FolderPath& folder, const String& name);
