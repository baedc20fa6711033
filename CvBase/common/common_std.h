#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>

#include "CvBase/common/common_path.h"
#include "CvBase/common/common_string.h"

#pragma GCC visibility push(default)

/// \file
/// Texts and paths beside the standard library's: conversions, output and hashing. common_filesystem.h has
/// std::filesystem.
///
///     std::unordered_map<String, int> counts;
///     ++counts[StringFrom(line)];
///     std::cout << String("%1 lines").Arg(7) << '\n';

/// All bytes of `text`, NUL bytes too; empty for null.
[[nodiscard]] inline std::string ToStdString(const String& text) {
    return {text.CStr(), text.Length()};
}

/// The same without a copy. Good while a String with this text exists and is not changed.
[[nodiscard]] inline std::string_view ToStringView(const String& text) {
    return {text.CStr(), text.Length()};
}

/// A String of all bytes of `text`, NUL bytes too; empty, not null, for an empty one. Throws std::length_error for
/// 4 GiB or more.
[[nodiscard]] String StringFrom(std::string_view text);

/// Writes all bytes of `text`, as a std::string is written; nothing for null.
template <typename Text, typename = std::enable_if_t<std::is_same_v<Text, String>>>  // for nothing that converts to one
std::ostream& operator<<(std::ostream& out, const Text& text) {
    return out << ToStringView(text);
}

/// Writes the text that the system gets: path.ToString().
inline std::ostream& operator<<(std::ostream& out, const FilePath& path) {
    return out << path.ToString();
}
inline std::ostream& operator<<(std::ostream& out, const FolderPath& path) {
    return out << path.ToString();
}

namespace std {

/// So that texts can be the keys of unordered containers.
template <>
struct hash<String> {
    /// A number that is the same for Strings that operator== takes for equal, a null and an empty one included.
    size_t operator()(const String& text) const { return hash<string_view>()(text.CStr()); }
};

/// So that paths of files can be the keys of unordered containers.
template <>
struct hash<FilePath> {
    /// A number that is the same for paths that operator== takes for equal.
    size_t operator()(const FilePath& path) const { return hash<String>()(path.ToString().ToLower()); }
};

/// So that paths of folders can be the keys of unordered containers.
template <>
struct hash<FolderPath> {
    /// A number that is the same for paths that operator== takes for equal.
    size_t operator()(const FolderPath& path) const { return hash<String>()(path.ToString().ToLower()); }
};

}  // namespace std

#pragma GCC visibility pop
