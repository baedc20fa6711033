// Prints what Util tells of the running process, a line each: the name, the name to show, the version.

#include <cstdio>

#include "CvBase/Util/PlatformInfo.h"
#include "platform/MessageSend.h"

int main() {
    const id pool = cv::send<id>(cv::classNamed("NSAutoreleasePool"), "new");
    std::puts(Util::GetCurrentProcessName().CStr());
    std::puts(Util::GetCurrentProcessDisplayName().CStr());
    std::puts(Util::GetCurrentProcessDisplayVersion().CStr());
    std::fflush(stdout);
    cv::send<void>(pool, "release");
}
