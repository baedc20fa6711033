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
///
/// The plain way is to list the files and then the folders of each folder, both sorted, and to compare the files one by
/// one. But only the number of files before the match counts, so the files are not sorted; and the system is not asked
/// about an entry whose name cannot match and that cannot be a folder. 20,000 files in 100 folders take 6.8 ms this
/// way, and 9.2 ms when every entry is asked about.
class FileSearch {
public:
    /// `visited` must outlive the search.
    FileSearch(const String& name, bool recursive, unsigned int& visited);

    /// The first file found in `folder` or below; empty when there is none, or when too many others came first.
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
    std::string folder_;                         ///< where the search is
    std::set<std::pair<dev_t, ino_t>> entered_;  ///< the folders that were searched
};

}  // namespace Util
