#include "CvBase/Util/Folder/FileSearch.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>

namespace Util {

namespace {

constexpr unsigned int VISITED_LIMIT = 5000;

/// How many of the NUL-terminated texts in `names` come before `name`.
unsigned int countBefore(const std::string& names, const std::string& name) {
    unsigned int count = 0;
    for (const char* text = names.data(); text != names.data() + names.size(); text += std::strlen(text) + 1) {
        count += name.compare(text) > 0 ? 1U : 0U;
    }
    return count;
}

/// The device and inode of the folder at `path`; {0, 0} when it has gone.
std::pair<dev_t, ino_t> identityOf(const std::string& path) {
    struct stat status {};
    stat(path.c_str(), &status);
    return {status.st_dev, status.st_ino};
}

}  // namespace

FileSearch::FileSearch(const String& name, bool recursive, unsigned int& visited)
    : name_(name),
      filter_(String("*.") + FilePath(name, true).GetExtension()),
      recursive_(recursive),
      visited_(visited) {}

bool FileSearch::isWanted(const char* entry) const {
    if (std::strchr(entry, '\\') == nullptr) {
        return name_ == entry;
    }
    return FilePath(entry, true).GetFilename() == name_;
}

FileSearch::Contents FileSearch::read() {
    Contents contents;
    FolderScan scan(folder_.c_str());
    // Whatever lies in a folder that was entered before, through a link, was compared already.
    if (!scan.isOpen() || !entered_.insert(identityOf(folder_)).second) {
        return contents;
    }
    std::string files;  // each with a NUL
    while (scan.next()) {
        const bool isCandidate = filter_.matches(scan.name(), scan.nameLength());
        const bool mayBeFolder = recursive_ && !scan.isCalledFile();
        if (!isCandidate && !mayBeFolder) {
            continue;
        }
        const FolderScan::Kind kind = scan.likelyKind();
        if (kind == FolderScan::Kind::Folder && mayBeFolder) {
            contents.folders.emplace_back(scan.name());
        } else if (kind == FolderScan::Kind::File && isCandidate) {
            ++contents.mismatches;
            files.append(scan.name(), scan.nameLength() + 1);
            if (isWanted(scan.name()) && (contents.match.empty() || contents.match.compare(scan.name()) > 0)) {
                contents.match = scan.name();
            }
        }
    }
    if (!contents.match.empty()) {
        contents.mismatches = countBefore(files, contents.match);
    }
    std::sort(contents.folders.begin(), contents.folders.end());
    return contents;
}

bool FileSearch::count(unsigned int mismatches) {
    for (; mismatches > 0; --mismatches) {
        if (++visited_ > VISITED_LIMIT) {
            return false;
        }
    }
    return true;
}

FilePath FileSearch::in(const String& folder) {
    folder_ = folder.CStr();
    return inFolder();
}

FilePath FileSearch::inFolder() {
    const Contents contents = read();
    if (!count(contents.mismatches)) {
        return {};
    }
    if (!contents.match.empty()) {
        return {(folder_ + "/" + contents.match).c_str(), false};
    }
    const std::size_t length = folder_.size();
    for (const std::string& name : contents.folders) {
        folder_.append("/").append(name);
        FilePath found = inFolder();
        folder_.resize(length);
        if (!found.IsEmpty() || visited_ > VISITED_LIMIT) {
            return found;
        }
    }
    return {};
}

}  // namespace Util
