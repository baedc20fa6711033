// Listing a large folder, and searching a tree for a file, beside the system's own calls and other libraries.

#include <dirent.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "CvBase/Util/Dir.h"
#include "CvBase/common/common_path.h"
#include "CvBase/common/common_string.h"
#include "benchmarks/support/Main.h"
#include "tests/support/TempDir.h"

#if CV_PEER_QT
#include <QDir>
#include <QDirIterator>
#endif

namespace {

using bench::addAnswering;
using Names = std::vector<std::string>;

constexpr int LISTED_FILES = 100000;
constexpr int TEXT_FILES = LISTED_FILES / 5 * 4;
constexpr std::string_view EXTENSION = ".txt";

/// 100 folders in 10, with 200 files each; a fifth of the files has the extension that the search is for.
constexpr int TOP_FOLDERS = 10;
constexpr int FOLDERS_IN_EACH = 10;
constexpr int FILES_IN_EACH = 200;
const char* const WANTED = "wanted.txt";

/// "file 000042.txt".
std::string fileName(int number, bool isText) {
    const std::string digits = std::to_string(number);
    return "file " + std::string(6 - digits.size(), '0') + digits + (isText ? ".txt" : ".dat");
}

/// "folder 4/folder 2/".
std::string innerFolder(int number) {
    return "folder " + std::to_string(number / FOLDERS_IN_EACH) + "/folder " +
           std::to_string(number % FOLDERS_IN_EACH) + '/';
}

/// The folder of LISTED_FILES files, TEXT_FILES of them with EXTENSION, made at the first call.
const std::string& largeFolder() {
    static const test::TempDir folder;
    static const bool filled = [] {
        for (int i = 0; i < LISTED_FILES; ++i) {
            test::writeFile(folder / fileName(i * 7919 % LISTED_FILES, i % 5 != 0), "");
        }
        return true;
    }();
    (void)filled;
    return folder.path();
}

/// The tree of 20,000 files; the one called WANTED is in its last folder.
const std::string& tree() {
    static const test::TempDir folder;
    static const bool filled = [] {
        const int folders = TOP_FOLDERS * FOLDERS_IN_EACH;
        for (int i = 0; i < folders; ++i) {
            for (int file = 0; file < FILES_IN_EACH; ++file) {
                test::writeFile(folder / (innerFolder(i) + fileName(file, file % 5 == 0)), "");
            }
        }
        test::writeFile(folder / (innerFolder(folders - 1) + WANTED), "");
        return true;
    }();
    (void)filled;
    return folder.path();
}

bool isText(std::string_view name) {
    return name.size() >= EXTENSION.size() && name.substr(name.size() - EXTENSION.size()) == EXTENSION;
}

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

/// The number of names, when they are in order and end as they should.
template <typename List>
std::uint64_t countSorted(const List& names) {
    return std::is_sorted(names.begin(), names.end()) ? static_cast<std::uint64_t>(names.size()) : 0;
}

std::uint64_t listWithCvBase() {
    std::vector<String> names;
    Util::Dir::GetFilenames(String(largeFolder().c_str()), names, "*.txt", false, false);
    return countSorted(names);
}

std::uint64_t listWithReaddir() {
    Names names;
    const Folder folder(opendir(largeFolder().c_str()));
    while (const dirent* const entry = readdir(folder.get())) {
        if (isText(entry->d_name)) {
            names.emplace_back(entry->d_name);
        }
    }
    std::sort(names.begin(), names.end());
    return countSorted(names);
}

std::uint64_t listWithFilesystem() {
    Names names;
    for (const auto& entry : std::filesystem::directory_iterator(largeFolder())) {
        if (entry.path().extension() == EXTENSION && entry.is_regular_file()) {
            names.push_back(entry.path().filename().string());
        }
    }
    std::sort(names.begin(), names.end());
    return countSorted(names);
}

/// What a shell command writes, line by line.
Names linesOf(const std::string& command) {
    Names lines;
    std::FILE* const pipe = popen(command.c_str(), "r");
    char line[4096];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        const std::string_view text(line);
        lines.emplace_back(text.substr(0, text.size() - 1));
    }
    pclose(pipe);
    return lines;
}

std::uint64_t listWithFind() {
    Names names = linesOf("find '" + largeFolder() + "' -maxdepth 1 -type f -name '*.txt' -printf '%f\\n'");
    std::sort(names.begin(), names.end());
    return countSorted(names);
}

std::uint64_t searchWithCvBase() {
    unsigned int visited = 0;
    const FilePath found = Util::Dir::FindFile(WANTED, String(tree().c_str()), true, visited);
    return found.ToString().EndsWith(WANTED);
}

/// Whether a file of the name is below the folder: reads every folder once, and asks nothing else of the system.
bool isBelow(const std::string& path, std::string_view name) {
    const Folder folder(opendir(path.c_str()));
    Names inner;
    while (const dirent* const entry = readdir(folder.get())) {
        const std::string_view entryName(entry->d_name);
        if (entry->d_type == DT_DIR && entryName != "." && entryName != "..") {
            inner.emplace_back(entryName);
        } else if (entryName == name) {
            return true;
        }
    }
    // The order of the names is that of the other searches, so that the file is the last one for all.
    std::sort(inner.begin(), inner.end());
    return std::any_of(inner.begin(), inner.end(),
                       [&](const std::string& innerName) { return isBelow(path + '/' + innerName, name); });
}

std::uint64_t searchWithFilesystem() {
    std::uint64_t found = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(tree())) {
        found += entry.path().filename() == WANTED;
    }
    return found;
}

#if CV_PEER_QT
std::uint64_t listWithQDir() {
    const QStringList names = QDir(largeFolder().c_str()).entryList({"*.txt"}, QDir::Files | QDir::Hidden, QDir::Name);
    return static_cast<std::uint64_t>(names.size());
}

std::uint64_t searchWithQDir() {
    QDirIterator entries(tree().c_str(), {WANTED}, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    std::uint64_t found = 0;
    for (; entries.hasNext(); entries.next()) {
        ++found;
    }
    return found;
}
#endif

[[maybe_unused]] const bool added = [] {
    const std::string list = "Folders/list-100000-files";
    addAnswering(list, "CvBase", listWithCvBase, TEXT_FILES);
    addAnswering(list, "readdir", listWithReaddir, TEXT_FILES);
    addAnswering(list, "std::filesystem", listWithFilesystem, TEXT_FILES);
    addAnswering(list, "find", listWithFind, TEXT_FILES, bench::Clock::Wall);
    const std::string search = "Folders/search-20000-files";
    addAnswering(search, "CvBase", searchWithCvBase, 1);
    addAnswering(
        search, "readdir", [] { return isBelow(tree(), WANTED); }, 1);
    addAnswering(search, "std::filesystem", searchWithFilesystem, 1);
    addAnswering(
        search, "find", [] { return linesOf("find '" + tree() + "' -type f -name " + WANTED).size(); }, 1,
        bench::Clock::Wall);
#if CV_PEER_QT
    addAnswering(list, "QDir", listWithQDir, TEXT_FILES);
    addAnswering(search, "QDirIterator", searchWithQDir, 1);
#endif
    return true;
}();

}  // namespace
