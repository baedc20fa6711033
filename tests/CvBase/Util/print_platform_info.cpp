// Prints what Util tells of the running process, a line each: the name, the name to show, the version.

#include <cstdio>

#include "CvBase/Mac/AutoreleasePool.h"
#include "CvBase/Util/PlatformInfo.h"

int main() {
    const cv::AutoreleasePool pool;
    std::puts(Util::GetCurrentProcessName().CStr());
    std::puts(Util::GetCurrentProcessDisplayName().CStr());
    std::puts(Util::GetCurrentProcessDisplayVersion().CStr());
    std::fflush(stdout);
}
