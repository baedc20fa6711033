#pragma once

#include <filesystem>
#include <string>

#include "CvBase/common/common_path.h"
#include "CvBase/common/common_std.h"

/// \file
/// Paths beside std::filesystem's. A header of its own, because Macs before 10.15 have no std::filesystem.
///
/// What a std::filesystem::path says and a FilePath cannot: ".." after a symbolic link, which FilePath folds in the
/// text, and names with a backslash, which is a separator there.

/// The path as the system gets it; empty for no path.
[[nodiscard]] inline std::filesystem::path ToStdPath(const FilePath& path) {
    return ToStdString(path.ToString());
}
[[nodiscard]] inline std::filesystem::path ToStdPath(const FolderPath& path) {
    return path.IsEmpty() ? std::filesystem::path() : std::filesystem::path(ToStdString(path.ToString()));
}

/// The path `path`, made absolute with the working folder; no path for an empty one. "~" is an ordinary name. Throws
/// std::filesystem::filesystem_error when there is no working folder to read.
[[nodiscard]] inline FilePath FilePathFrom(const std::filesystem::path& path) {
    return FilePath(path.empty() ? String() : StringFrom(std::filesystem::absolute(path).string()), false);
}
[[nodiscard]] inline FolderPath FolderPathFrom(const std::filesystem::path& path) {
    return FolderPath(path.empty() ? String() : StringFrom(std::filesystem::absolute(path).string()), false);
}
