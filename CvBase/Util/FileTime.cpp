#include "CvBase/Util/FileTime.h"

#include <sys/stat.h>
#include <sys/time.h>

#include <array>

namespace Util {

bool ReadFileTime(const String& path, FileTime& time) {
    struct stat status {};
    if (stat(path.CStr(), &status) != 0) {
        return false;
    }
    time.accessTime = static_cast<std::int32_t>(status.st_atime);
    time.modificationTime = static_cast<std::int32_t>(status.st_mtime);
    return true;
}

bool WriteFileTime(const String& path, const FileTime& time) {
    std::array<timeval, 2> times{};
    times[0].tv_sec = time.accessTime;
    times[1].tv_sec = time.modificationTime;
    return utimes(path.CStr(), times.data()) == 0;
}

}  // namespace Util
