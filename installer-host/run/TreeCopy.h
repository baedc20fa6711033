#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace host {

/// A folder that is copied.
struct CopySource {
    int folder;        ///< open; O_PATH is enough
    bool isView;       ///< whether reading it changes no access time (ReadOnlyView.h)
    std::string path;  ///< the absolute path at which it stands
    std::string name;  ///< of the copy
};

/// Called for each entry, and for large files now and then, with how many entries and bytes are done. It may throw to
/// end the copying.
using CopyProgress = std::function<void(std::uintmax_t entries, std::uintmax_t bytes)>;

/// Copies folders into the open folder `to` with everything in them as it is: files of all kinds, holes, links, hard
/// links, owners, modes, times, extended attributes and access lists. What is mounted in them is copied, too, which the
/// user is told. Throws Failure (RootNotMade), with the file and the reason, when the copy would not be like the
/// original.
void copyTrees(const std::vector<CopySource>& sources, int to, const CopyProgress& progress);

}  // namespace host
