#include "installer-host/look/Places.h"

#include <system_error>

namespace host {

bool liesIn(std::filesystem::path folder, const std::filesystem::path& top) {
    std::error_code error;
    while (folder != top && !std::filesystem::equivalent(folder, top, error)) {
        if (!folder.has_relative_path()) {
            return false;
        }
        folder = folder.parent_path();
    }
    return true;
}

}  // namespace host
