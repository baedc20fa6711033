#pragma once

#include <cstddef>
#include <string>

#include "installer-host/look/Tree.h"

namespace host {

/// Reads what entries have beside their status.
class DetailsReader {
public:
    /// Completes `entry`, which has a status and lies in the working folder under `name`. What cannot be read becomes
    /// its problem.
    void complete(Entry& entry, const std::string& name);

private:
    void readPropertyList(const Entry& entry, const std::string& name, Details& details);

    std::size_t bytesKept_ = 0;
};

/// Whether the entry is a file that is named as property lists are.
bool isPropertyList(const Entry& entry);

}  // namespace host
