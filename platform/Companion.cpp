#include "platform/Companion.h"

#include <dlfcn.h>

#include <climits>
#include <cstdlib>

namespace cv {

std::string companionPath(const char* name) {
    Dl_info library{};
    char path[PATH_MAX];
    // The loader may know the library by a relative path or a link.
    if (dladdr(reinterpret_cast<const void*>(&companionPath), &library) == 0 || library.dli_fname == nullptr ||
        realpath(library.dli_fname, path) == nullptr) {
        return {};
    }
    const std::string whole = path;
    return whole.substr(0, whole.rfind('/') + 1) + "CvPlatform/" + name;
}

}  // namespace cv
