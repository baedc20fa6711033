#include "CvBase/Util/Folder/FolderScan.h"

#include <sys/stat.h>

#include <climits>
#include <cstring>
#include <string>

namespace Util {

namespace {

/// How long the part of an entry's path before its name is: the length of `text`, the folder's with "/" at its end, or
/// 0 when the paths of entries begin with another text.
std::size_t startLength(const std::string& text, const FolderPath& path) {
    return (path + "x").ToString() == (text + "x").c_str() ? text.size() : 0;
}

bool isDotName(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

}  // namespace

FolderScan::FolderScan(const char* text)
    : folder_(opendir(text)), entryPath_(std::string(text) + "/"), startLength_(entryPath_.size()) {}

FolderScan::FolderScan(const char* text, const FolderPath& path)
    : folder_(opendir(text)), path_(path), entryPath_(text), startLength_(startLength(entryPath_, path)) {}

bool FolderScan::next() {
    do {
        entry_ = readdir(folder_.get());
    } while (entry_ != nullptr && (isDotName(name()) || *name() == '\0'));
    nameLength_ = entry_ != nullptr ? std::strlen(name()) : 0;
    return entry_ != nullptr;
}

bool FolderScan::leadsToEntry() const {
    const bool isShort = startLength_ + nameLength_ < PATH_MAX;
    return isShort && (path_.IsEmpty() || (startLength_ != 0 && std::memchr(name(), '\\', nameLength_) == nullptr));
}

const char* FolderScan::entryPath() {
    entryPath_.resize(startLength_);
    return entryPath_.append(name(), nameLength_).c_str();
}

FolderScan::Kind FolderScan::kind() {
    struct stat status {};
    if (leadsToEntry()) {
        if (isSearchable_ && entry_->d_type == DT_REG) {
            return Kind::File;
        }
        // A Mac has fstatat(), which need not follow the path again, from 10.10 on only.
        if (stat(entryPath(), &status) != 0) {
            return Kind::Missing;
        }
        isSearchable_ = true;
    } else if (path_.IsEmpty() || stat((path_ + name()).ToString().CStr(), &status) != 0) {
        return Kind::Missing;
    }
    return S_ISREG(status.st_mode) ? Kind::File : Kind::Folder;
}

FolderScan::Kind FolderScan::likelyKind() {
    return entry_->d_type == DT_DIR && leadsToEntry() ? Kind::Folder : kind();
}

}  // namespace Util
