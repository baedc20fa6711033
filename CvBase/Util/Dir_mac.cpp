#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "CvBase/Util/Dir.h"
#include "CvBase/Util/Folder/FileSearch.h"
#include "CvBase/Util/Folder/FolderScan.h"
#include "CvBase/Util/Folder/NameFilter.h"
#include "CvBase/Util/Folder/NameList.h"

namespace Util {

using Exception::FileIO;

namespace {

/// The lines by which readers of logs know the failures. They, and the texts of the messages, stay as they are when the
/// code changes.
enum FailureLine {
    CreateRecursiveLine = 105,
    CreateLine = 118,
    RemoveLine = 135,
    SetTimeLine = 158,
    GetTimeLine = 171
};

[[noreturn]] void fail(const String& message, const FolderPath& folder, FileIO::ErrorType kind, FailureLine line) {
    ::Exception::Throw(FileIO(message, folder, kind, 0), "Util/Dir_mac", line);
}

void makeFolder(const String& text, const FolderPath& folder, FailureLine line) {
    const int result = mkdir(text.CStr(), 0755);
    const int error = errno;
    if (result != 0) {
        fail(String("mkdir() failed with %1/%2").Arg(result).Arg(error), folder, FileIO::WriteError, line);
    }
}

enum class Keep { Files, Folders, All };

bool keeps(Keep keep, FolderScan::Kind kind) {
    switch (kind) {
        case FolderScan::Kind::File:
            return keep != Keep::Folders;
        case FolderScan::Kind::Folder:
            return keep != Keep::Files;
        case FolderScan::Kind::Missing:
            break;
    }
    return false;
}

/// Lists `scan` into `names`. `filter` may be an element of `names`.
void list(FolderScan scan, std::vector<String>& names, const String& filter, bool append, Keep keep) {
    const NameFilter wanted(filter);
    if (!append) {
        names.clear();
    }
    if (!scan.isOpen()) {
        return;
    }
    NameList found;
    while (scan.next()) {
        if (wanted.matches(scan.name(), scan.nameLength()) && keeps(keep, scan.kind())) {
            found.add(scan.name(), scan.nameLength());
        }
    }
    found.sortInto(names);
}

}  // namespace

Dir::Dir(const FolderPath& path) : path_(path) {}

void Dir::SetPath(const FolderPath& path) {
    path_ = path;
}

String Dir::text() const {
    return path_.IsEmpty() ? String("") : path_.ToString();
}

bool Dir::Exists() const {
    if (path_.IsEmpty()) {
        return false;
    }
    std::string path = text().CStr();
    if (access(path.c_str(), F_OK) != 0) {
        return false;
    }
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool Dir::GetDirInfo(DirInfo& info) {
    struct statfs status {};
    if (statfs(text().CStr(), &status) != 0) {
        return false;
    }
    // A product of 32 bits, as callers know it.
    const std::uint32_t product =
        static_cast<std::uint32_t>(status.f_bavail) * static_cast<std::uint32_t>(status.f_bsize);
    info.freeBytes = static_cast<std::int32_t>(product);
    return true;
}

void Dir::Create(bool recursive) {
    if (Exists()) {
        return;
    }
    const std::string path = text().CStr();
    if (!recursive) {
        makeFolder(path.c_str(), path_, CreateLine);
        return;
    }
    std::size_t start = 0;
    if (path.compare(0, 1, "/") == 0) {
        start = 1;
    } else if (path.compare(0, 2, "~/") == 0) {
        start = 2;
    } else {
        return;
    }
    for (std::size_t i = path.find('/', start + 1); i != std::string::npos; i = path.find('/', start + 1)) {
        const String parent = path.substr(0, i).c_str();
        if (!Dir(FolderPath(parent, false)).Exists()) {
            makeFolder(parent, path_, CreateRecursiveLine);
        }
        start = i;
    }
}

void Dir::Remove() {
    if (Exists() && rmdir(text().CStr()) != 0) {
        fail("rmdir() failed", path_, FileIO::RemoveError, RemoveLine);
    }
}

void Dir::SetTime(const FileTime& time) {
    if (!WriteFileTime(text(), time)) {
        fail("Error setting folder time", path_, FileIO::UnexpectedError, SetTimeLine);
    }
}

void Dir::GetTime(FileTime* time) {
    if (!ReadFileTime(text(), *time)) {
        fail("Error getting folder time", path_, FileIO::UnexpectedError, GetTimeLine);
    }
}

void Dir::GetFoldernames(std::vector<String>& names, const String& filter, bool append) {
    list({text().CStr(), path_}, names, filter, append, Keep::Folders);
}

void Dir::GetFoldernames(const String& folder, std::vector<String>& names, const String& filter, bool append) {
    list(FolderScan(folder.CStr()), names, filter, append, Keep::Folders);
}

void Dir::GetFilenames(std::vector<String>& names, const String& filter, bool append, bool includeNonFiles) {
    list({text().CStr(), path_}, names, filter, append, includeNonFiles ? Keep::All : Keep::Files);
}

void Dir::GetFilenames(const String& folder, std::vector<String>& names, const String& filter, bool append,
                       bool includeNonFiles) {
    list(FolderScan(folder.CStr()), names, filter, append, includeNonFiles ? Keep::All : Keep::Files);
}

FilePath Dir::FindFile(const String& name, const String& folder, bool recursive, unsigned int& visited) {
    return FileSearch(name, recursive, visited).in(folder);
}

}  // namespace Util
