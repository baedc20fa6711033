#include "installer-host/run/MountNamespace.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <string>

#include "installer-host/run/KernelFile.h"

namespace host {

bool enterMountNamespace() {
    return unshare(CLONE_NEWNS) == 0 && mount(nullptr, "/", nullptr, MS_REC | MS_SLAVE, nullptr) == 0;
}

bool enterUserNamespace() {
    const std::string uid = std::to_string(geteuid());
    const std::string gid = std::to_string(getegid());
    return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && writeKernelFile("/proc/self/setgroups", "deny") &&
           writeKernelFile("/proc/self/uid_map", uid + " " + uid + " 1") &&
           writeKernelFile("/proc/self/gid_map", gid + " " + gid + " 1");
}

}  // namespace host
