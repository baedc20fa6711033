// Paths made from any text, with any HOME, against a canonicaliser that is written from the rules of common_path.h
// alone.

#include <algorithm>
#include <filesystem>
#include <optional>

#include "CvBase/common/common_path.h"
#include "fuzz/Fuzz.h"
#include "fuzz/PathModel.h"
#include "fuzz/TextModel.h"

namespace {

using fuzz::expectEqual;

const std::string WORKING_FOLDER = std::filesystem::current_path();

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

/// What a path is made of `text`; nothing stands for an unset HOME.
std::string absolute(const std::string& text, const std::optional<std::string>& home) {
    const std::string path = fuzz::untilNul(text) == "~" ? "~/" : text;  // compared as Strings are, up to a NUL
    if (std::all_of(path.begin(), path.end(), fuzz::isWhite)) {
        return "";
    }
    if (path.size() > 1 && path[0] == '~' && isSeparator(path[1])) {
        return home.value_or("") + "/" + path.substr(2);
    }
    return isSeparator(path[0]) ? path : WORKING_FOLDER + "/" + path;
}

std::string withSeparator(const std::string& path) {
    return path.empty() || isSeparator(path.back()) ? path : path + "/";
}

std::string withoutEnd(std::string path) {
    while (!path.empty() && isSeparator(path.back())) {
        path.pop_back();
    }
    return path;
}

bool isDrive(const std::string& path) {
    return path.size() >= 2 && path[1] == ':';
}

std::string lastComponent(const std::string& text) {
    const std::string path = withoutEnd(text);
    const std::size_t separator = path.find_last_of("/\\");
    return separator != std::string::npos ? path.substr(separator + 1) : isDrive(path) ? path.substr(2) : path;
}

/// The text of the folder that holds what is at `text`; not yet absolute.
std::string holder(const std::string& text) {
    const std::string path = withoutEnd(text);
    const std::size_t separator = path.find_last_of("/\\");
    if (separator == std::string::npos) {
        return isDrive(path) ? path.substr(0, 2) + "/" : ".";
    }
    return separator == 0 ? "/" : path.substr(0, separator == 2 && path[1] == ':' ? 3 : separator);
}

std::string bytes(const String& text) {
    return {text.CStr(), text.Length()};
}

void checkFile(const FilePath& file, const std::string& made, const std::optional<std::string>& home) {
    const std::string folded = fuzz::foldedPath(made);
    const std::string name = lastComponent(made);
    const std::size_t dot = name.rfind('.');
    expectEqual("GetInternal", bytes(file.GetInternal()), made);
    expectEqual("ToString", bytes(file.ToString()), folded.substr(0, folded.size() - 1));
    expectEqual("GetFilename", bytes(file.GetFilename()), name);
    expectEqual("GetExtension", bytes(file.GetExtension()), dot == std::string::npos ? "" : name.substr(dot + 1));
    expectEqual("GetBaseName", bytes(file.GetBaseName()), name.substr(0, dot));
    expectEqual("GetFolder", bytes(file.GetFolder().GetInternal()),
                made.empty() ? "" : withSeparator(absolute(holder(made), home)));
}

void checkFolder(const FolderPath& folder, const std::string& made, const std::optional<std::string>& home) {
    const bool isTop = made.empty() || fuzz::foldedPath(made) == "/" || fuzz::foldedPath(made) == "./";
    expectEqual("GetInternal of a folder", bytes(folder.GetInternal()), made);
    expectEqual("ToString of a folder", bytes(folder.ToString()), fuzz::foldedPath(made));
    expectEqual("IsTopLevel", folder.IsTopLevel(), isTop);
    expectEqual("GetFolderName", bytes(folder.GetFolderName()), isTop ? "" : lastComponent(absolute(made, home)));
    expectEqual("GetParent", bytes(folder.GetParent().GetInternal()),
                isTop ? "" : withSeparator(absolute(holder(absolute(made, home)), home)));
}

template <typename Path>
void checkOrder(const Path& a, const Path& b, const std::string& madeA, const std::string& madeB) {
    const int order = fuzz::lowered(fuzz::foldedPath(madeA)).compare(fuzz::lowered(fuzz::foldedPath(madeB)));
    expectEqual("==", a == b, order == 0);
    expectEqual("<", a < b, order < 0);
    expectEqual("<=", a <= b, order <= 0);
}

std::optional<std::string> chooseHome(fuzz::Input& input) {
    const char* const homes[] = {"/Users/u", "/Users/u/", "relative", "", "//server/u"};
    const auto choice = input.ConsumeIntegralInRange<std::size_t>(0, std::size(homes));
    if (choice == std::size(homes)) {
        unsetenv("HOME");
        return std::nullopt;
    }
    setenv("HOME", homes[choice], 1);
    return homes[choice];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::optional<std::string> home = chooseHome(input);
    const std::string textA = input.ConsumeRandomLengthString(200);
    const std::string textB = input.ConsumeRandomLengthString(200);
    const FilePath fileA(fuzz::stringOf(textA), input.ConsumeBool());
    const FilePath fileB(fuzz::stringOf(textB), false);
    const FolderPath folderA(fuzz::stringOf(textA), false);
    const FolderPath folderB(fuzz::stringOf(textB), true);
    const std::string madeA = absolute(textA, home);
    const std::string madeB = absolute(textB, home);
    fuzz::trace() = " " + fuzz::shown(textA) + " and " + fuzz::shown(textB) + " at home in " + home.value_or("nowhere");

    expectEqual("IsRelative", FilePath::IsRelative(fuzz::stringOf(textA)), !textA.empty() && !isSeparator(textA[0]));
    checkFile(fileA, madeA, home);
    checkFolder(folderA, withSeparator(madeA), home);
    checkOrder(fileA, fileB, madeA, madeB);
    checkOrder(folderA, folderB, withSeparator(madeA), withSeparator(madeB));
    expectEqual("folder + name", bytes((folderA + fuzz::stringOf(textB)).GetInternal()),
                absolute(withSeparator(madeA) + textB, home));
    expectEqual("folder / name", bytes((folderA / fuzz::stringOf(textB)).GetInternal()),
                withSeparator(absolute(withSeparator(madeA) + textB, home)));
    return 0;
}
