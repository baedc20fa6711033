#include "CvBase/common/common_path.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::string_view SEPARATORS = "/\\";

std::string_view view(const String& text) {
    return {text.CStr(), text.Length()};
}

bool isSeparator(char c) {
    return SEPARATORS.find(c) != std::string_view::npos;
}

String homeFolder() {
    const char* home = std::getenv("HOME");
    return home != nullptr ? String(home) + "/" : String("/");
}

String workingFolder() {
    std::array<char, 1023> buffer;
    return getcwd(buffer.data(), buffer.size()) != nullptr ? String(buffer.data()) + "/" : String("/");
}

/// The text `path`, made absolute.
String convertRelative(const String& path) {
    const String text = path == "~" ? String("~/") : path;
    if (text.BeginsWith("~/") || text.BeginsWith("~\\")) {
        return homeFolder() + text.Mid(2);
    }
    return PathDetail::isRelative(text) ? workingFolder() + text : text;
}

/// What a path made of `path` stores.
String absoluteText(const String& path) {
    return path.SimplifyWhiteSpace().IsEmpty() ? String() : convertRelative(path);
}

/// Makes every run of slashes one slash, except the two that a network path begins with.
void collapseSlashes(std::string& text) {
    const std::size_t kept = text.compare(0, 2, "//") == 0 ? 2 : 0;
    const auto bothSlashes = [](char a, char b) { return a == '/' && b == '/'; };
    text.erase(std::unique(text.begin() + static_cast<std::ptrdiff_t>(kept), text.end(), bothSlashes), text.end());
}

std::vector<std::string_view> splitAtSlashes(std::string_view text) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (std::size_t slash = text.find('/'); slash != std::string_view::npos; slash = text.find('/', start)) {
        parts.push_back(text.substr(start, slash - start));
        start = slash + 1;
    }
    parts.push_back(text.substr(start));
    return parts;
}

/// Removes each ".." together with the component before it, in one pass. The component that follows a removed pair
/// moves into the place of the removed one, where the pass has been already, so it is kept even when it is a ".."
/// itself.
std::vector<std::string_view> foldParents(const std::vector<std::string_view>& parts) {
    std::vector<std::string_view> folded;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (parts[i] == ".." && !folded.empty()) {
            folded.pop_back();
            ++i;
            if (i == parts.size()) {
                break;
            }
        }
        folded.push_back(parts[i]);
    }
    return folded;
}

std::string cleanDirPath(std::string text) {
    if (text.empty()) {
        return text;
    }
    std::replace(text.begin(), text.end(), '\\', '/');
    text.resize(std::max<std::size_t>(text.find_last_not_of('/') + 1, 1));
    collapseSlashes(text);

    std::string cleaned;
    const char* separator = "";
    for (const std::string_view part : foldParents(splitAtSlashes(text))) {
        cleaned.append(separator).append(part);
        separator = "/";
    }
    return cleaned;
}

/// The folded text with exactly one "/" at its end; "/" for an empty one.
std::string canonicalize(const String& text) {
    std::string folded = cleanDirPath(text.CStr()) + "/";
    while (folded.size() >= 2 && folded.compare(folded.size() - 2, 2, "//") == 0) {
        folded.pop_back();
    }
    return folded;
}

/// What comparisons compare.
String comparisonKey(const String& text) {
    return String(canonicalize(text).c_str()).ToLower();
}

String withoutTrailingSeparators(const String& text) {
    return text.Left(static_cast<unsigned int>(view(text).find_last_not_of(SEPARATORS) + 1));
}

bool hasDriveLetter(std::string_view text) {
    return text.size() >= 2 && text[1] == ':';
}

/// The last component of a path.
String getFile(const String& path) {
    const String text = withoutTrailingSeparators(path);
    const std::size_t separator = view(text).find_last_of(SEPARATORS);
    if (separator == std::string_view::npos) {
        return hasDriveLetter(view(text)) ? text.Mid(2) : text;
    }
    return text.Mid(static_cast<unsigned int>(separator + 1));
}

/// The text of the folder that holds the file or folder at `path`, which is not empty.
String getFolder(const String& path) {
    const String text = withoutTrailingSeparators(path);
    const std::size_t separator = view(text).find_last_of(SEPARATORS);
    if (separator == std::string_view::npos) {
        return hasDriveLetter(view(text)) ? text.Left(2) + "/" : String(".");
    }
    if (separator == 0) {
        return "/";
    }
    const bool isDriveRoot = separator == 2 && hasDriveLetter(view(text));
    return text.Left(isDriveRoot ? 3 : static_cast<unsigned int>(separator));
}

}  // namespace

int PathDetail::compare(const String& a, const String& b) {
    return std::strcmp(comparisonKey(a).CStr(), comparisonKey(b).CStr());
}

bool PathDetail::isRelative(const String& text) {
    return !text.IsEmpty() && !isSeparator(*text.CStr());
}

FilePath::FilePath(const String& path, bool flag) {
    construct(path, flag);
}

void FilePath::construct(const String& path, bool) {
    path_ = absoluteText(path);
}

String FilePath::GetFilename() const {
    return getFile(path_);
}

String FilePath::GetExtension() const {
    const String name = GetFilename();
    const checked_value<unsigned int> dot = name.FindRev('.');
    return dot.IsSet() ? name.Mid(dot.Value() + 1) : String();
}

String FilePath::GetBaseName() const {
    const String name = GetFilename();
    const checked_value<unsigned int> dot = name.FindRev('.');
    return dot.IsSet() ? name.Left(dot.Value()) : name;
}

FolderPath FilePath::GetFolder() const {
    return IsEmpty() ? FolderPath() : FolderPath(getFolder(path_), false);
}

String FilePath::ToString() const {
    std::string text = canonicalize(path_);
    text.pop_back();
    return text.c_str();
}

FolderPath::FolderPath(const String& path, bool) : StoredPath(absoluteText(path)) {
    if (!path_.IsEmpty() && !isSeparator(view(path_).back())) {
        path_ += "/";
    }
}

bool FolderPath::IsTopLevel() const {
    const std::string folded = canonicalize(path_);
    return folded == "/" || folded == "./";
}

String FolderPath::GetFolderName() const {
    return IsTopLevel() ? String() : FilePath(path_, false).GetFilename();
}

FolderPath FolderPath::GetParent() const {
    return IsTopLevel() ? FolderPath() : FilePath(path_, false).GetFolder();
}

String FolderPath::ToString() const {
    return canonicalize(path_).c_str();
}

FilePath operator+(const FolderPath& folder, const String& name) {
    return FilePath(folder.GetInternal() + name, false);
}

FolderPath operator/(const FolderPath& folder, const String& name) {
    return FolderPath(folder.GetInternal() + name, false);
}
