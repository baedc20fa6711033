#include "installer-host/run/Devices.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>

#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/MountNamespace.h"

namespace host {

namespace {

/// Mounts the device over itself, read-only.
bool protect(const char* device) {
    mount_attr readOnly{};
    readOnly.attr_set = MOUNT_ATTR_RDONLY;
    return mount(device, device, nullptr, MS_BIND, nullptr) == 0 &&
           mount_setattr(AT_FDCWD, device, 0, &readOnly, sizeof readOnly) == 0;
}

}  // namespace

bool protectDevices() {
    // In a user namespace root would lose the rights that it needs for another user's files.
    const bool isEntered = geteuid() == 0 ? enterMountNamespace() : enterUserNamespace();
    return isEntered && std::all_of(std::begin(DEVICES), std::end(DEVICES), protect);
}

bool canProtectDevices() {
    const pid_t child = fork();
    if (child == 0) {
        _exit(protectDevices() ? 0 : 1);
    }
    return child > 0 && reap(child) == 0;
}

}  // namespace host
