#pragma once

#include "CvBase/common/common_string.h"

#pragma GCC visibility push(default)

class FolderPath;

/// \file
/// The names of files and folders, as values. A path is text: nothing here asks the file system whether it exists.
///
///     const FolderPath folder("~/Documents", false);
///     const FilePath file = folder + "notes.txt";  // /Users/somebody/Documents/notes.txt
///
/// Making a path turns it into an absolute one and changes nothing else. Its text is folded when it is compared and
/// when ToString() gives it to the system: separators become "/", doubled ones one, and a ".." is removed together with
/// the name before it. Four things to know before using one:
///
/// - ".." is folded in the text, together with the name before it, so after a symbolic link it leads elsewhere than the
///   system's own ".." does. The folding is a single pass: of two ".." in a row only the first is folded, and a ".."
///   right after the root takes the root away ("/../a" becomes the relative "a"). Do not pass unchecked text that holds
///   ".." to anything that removes, renames or creates.
/// - A backslash is a separator like "/" everywhere; a name that holds one cannot be addressed.
/// - Comparisons ignore the case of A to Z, so on a case-sensitive volume two different files can compare equal.
/// - "." components stay.
///
/// Folding drops the first NUL byte and all that follows it. HOME and the working folder are read when the path is
/// made, not later. Whatever makes a path or a text may throw std::bad_alloc.

namespace PathDetail {

/// Compares two stored texts as paths: negative when `a` comes before `b`, 0 when they name the same.
int compare(const String& a, const String& b);

/// As StoredPath::IsRelative().
bool isRelative(const String& text);

/// What FilePath and FolderPath have in common: the text and its comparisons, each with its own kind (`Path`) only.
template <class Path>
class StoredPath {
public:
    /// Whether this is the empty path, which names nothing.
    [[nodiscard]] bool IsEmpty() const { return path_.IsEmpty(); }

    /// The text as it was made, not folded; a folder's ends with a separator. Null or empty for the empty path.
    [[nodiscard]] const String& GetInternal() const { return path_; }

    /// Whether the text `path` is not empty and begins with neither "/" nor a backslash. A leading "~" counts as
    /// relative.
    [[nodiscard]] static bool IsRelative(const String& path) { return isRelative(path); }

    /// Order and equality of the folded texts, byte by byte, ignoring the case of A to Z. The empty path compares equal
    /// to "/".
    bool operator<=(const Path& other) const { return compare(path_, other.GetInternal()) <= 0; }
    bool operator<(const Path& other) const { return compare(path_, other.GetInternal()) < 0; }
    friend bool operator==(const Path& a, const Path& b) { return compare(a.GetInternal(), b.GetInternal()) == 0; }

protected:
    StoredPath() = default;                                   ///< the empty path
    explicit StoredPath(const String& path) : path_(path) {}  ///< the path with this text

    String path_;  ///< absolute where it could be made so, not folded
};

}  // namespace PathDetail

/// The name of a file.
class FilePath : public PathDetail::StoredPath<FilePath> {
public:
    /// The empty path.
    FilePath() = default;

    /// As construct(). `flag` has no effect on this platform.
    FilePath(const String& path, bool flag);

    /// Makes this the path of `path` (UTF-8):
    /// - blank or null text gives the empty path;
    /// - a leading "~/" (or "~" alone) becomes the value of HOME and "/", or "/" when HOME is not set; "~user" is an
    ///   ordinary name;
    /// - other text without a leading separator gets the working folder and "/" in front, or "/" alone when the working
    ///   folder cannot be read or is longer than 1022 bytes;
    /// - everything else is kept as it is, blanks included.
    ///
    /// The result is relative only if the value of HOME is. `flag` has no effect on this platform.
    void construct(const String& path, bool flag);

    /// The last component, without trailing separators; empty for the root.
    [[nodiscard]] String GetFilename() const;

    /// What follows the last "." of the file name: "gz" of "archive.tar.gz", "profile" of ".profile"; empty without
    /// one.
    [[nodiscard]] String GetExtension() const;

    /// What precedes the last "." of the file name: "archive.tar", and nothing of ".profile"; the whole name without
    /// one.
    [[nodiscard]] String GetBaseName() const;

    /// The folder that holds the file. The empty path gives an empty one; a path of separators alone gives the working
    /// folder, with a "." at its end.
    [[nodiscard]] FolderPath GetFolder() const;

    /// The text to give to the system: folded, with "/" as the separator, without a trailing one. Empty for the empty
    /// path and for the root.
    [[nodiscard]] String ToString() const;
};

/// The name of a folder. Its text ends with a separator unless it is empty.
class FolderPath : public PathDetail::StoredPath<FolderPath> {
public:
    /// The empty path.
    FolderPath() = default;

    /// As FilePath::construct(), with "/" appended to a path that does not end with "/" or a backslash.
    FolderPath(const String& path, bool flag);

    /// Whether there is no folder above: the empty path, or one that folds to "/" or "./".
    [[nodiscard]] bool IsTopLevel() const;

    /// The folder's own name; empty for a top-level one.
    [[nodiscard]] String GetFolderName() const;

    /// The folder that holds this one; empty for a top-level one.
    [[nodiscard]] FolderPath GetParent() const;

    /// The text to give to the system: folded, with "/" as the separator and at the end. The empty path gives "/".
    [[nodiscard]] String ToString() const;
};

/// The file `name` in `folder`: both texts one after the other, as FilePath::construct() takes them, even when `name`
/// begins with "/". In the empty path, `name` alone is taken.
[[nodiscard]] FilePath operator+(const FolderPath& folder, const String& name);

/// The folder `name` in `folder`, in the same way.
///
///     const FolderPath presets = FolderPath("~/Library", false) / "Audio" / "Presets";
[[nodiscard]] FolderPath operator/(const FolderPath& folder, const String& name);

#pragma GCC visibility pop
