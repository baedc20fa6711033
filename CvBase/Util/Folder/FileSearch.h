#pragma once

#include <sys/types.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "CvBase/Util/Folder/FolderScan.h"
#include "CvBase/Util/Folder/NameFilter.h"
#include "CvBase/common/common_path.h"
#include "CvBase/common/common_string.h"

namespace Util {

/// One search of a folder tree for a file, as Dir::FindFile() describes it.
class FileSearch {
public:
    /// `visited` must outlive the search.
    FileSearch(const String& name, bool recursive, unsigned int& visited);

    /// The first file found in `folder` or below; empty when there is none or too many others were met.
    FilePath in(const String& folder);

private:
    /// Searches folder_.
    FilePath inFolder();

    /// What one folder holds for the search.
    struct Contents {
        unsigned int mismatches = 0;  ///< files that are listed before `match`, or all
        std::string match;            ///< the first file that is wanted; empty when there is none
        std::vector<std::string> folders;
    };
    Contents read();

    /// Whether the name `entry` has the wanted name as its last component.
    bool isWanted(const char* entry) const;

    /// Counts the files that were compared in vain; false when that ends the search.
    bool count(unsigned int mismatches);

    const String name_;
    const NameFilter filter_;
    const bool recursive_;
    unsigned int& visited_;
    std::string folder_;  ///< where the search is
    std::set<std::pair<dev_t, ino_t>> entered_;
};

}  // namespace Util
