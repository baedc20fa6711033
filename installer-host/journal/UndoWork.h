#pragma once

#include <functional>
#include <set>
#include <string>

#include "installer-host/journal/UndoResult.h"
#include "installer-host/look/RootFolder.h"
#include "platform/Preferences/LockedFolder.h"

namespace host {

/// Where an undo works, and what it has done so far.
struct UndoWork {
    const RootFolder& root;
    UndoResult& result;
    const std::function<void()>& endIfInterrupted;
    std::set<std::string> gone;  ///< what was removed, or in a dry run would have been

    void restore(UndoItem item);
    void leave(UndoItem item, const std::string& reason, bool isFault = false);
};

/// Opens the folder that the entry at `path` lies in and takes its lock. Throws cv::Fault; `isMissing` is then set when
/// there is no such folder.
cv::LockedFolder lockFolderOf(const UndoWork& work, const std::string& path, bool* isMissing = nullptr);

/// The name of the entry in that folder.
std::string nameOf(const std::string& path);

/// Each undoes one edit of a journal. What cannot be put back is left and named; only std::bad_alloc is thrown, and
/// what endIfInterrupted throws.
void undoFile(UndoWork& work, const FileEdit& edit);
void undoAttribute(UndoWork& work, const AttributeEdit& edit);
void undoFolder(UndoWork& work, const std::string& path);

}  // namespace host
