#include "installer-host/run/MountNamespace.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <string>

#include "platform/Descriptor.h"

namespace host {

namespace {

bool writeFile(const char* path, const std::string& text) {
    const cv::Descriptor file(open(path, O_WRONLY | O_CLOEXEC));
    return file.isOpen() && cv::writeAll(file.get(), text) == 0;
}

}  // namespace

bool enterMountNamespace() {
    return unshare(CLONE_NEWNS) == 0 && mount(nullptr, "/", nullptr, MS_REC | MS_SLAVE, nullptr) == 0;
}

bool enterUserNamespace() {
    const std::string uid = std::to_string(geteuid());
    const std::string gid = std::to_string(getegid());
    return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && writeFile("/proc/self/setgroups", "deny") &&
           writeFile("/proc/self/uid_map", uid + " " + uid + " 1") &&
           writeFile("/proc/self/gid_map", gid + " " + gid + " 1");
}

}  // namespace host
