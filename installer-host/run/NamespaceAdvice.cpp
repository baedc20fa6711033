#include "installer-host/run/NamespaceAdvice.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace host {

namespace {

/// The first line of a file of the system; empty when there is none.
std::string lineOf(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

bool isInContainer(const std::string& system) {
    std::error_code ignored;
    if (std::filesystem::exists(system + "/.dockerenv", ignored) ||
        std::filesystem::exists(system + "/run/.containerenv", ignored) ||
        std::filesystem::exists(system + "/run/systemd/container", ignored)) {
        return true;
    }
    const std::string group = lineOf(system + "/proc/1/cgroup");
    return group.find("docker") != std::string::npos || group.find("kubepods") != std::string::npos ||
           group.find("lxc") != std::string::npos;
}

}  // namespace

std::string namespaceAdvice(bool isRoot, const std::string& system) {
    if (isInContainer(system)) {
        return "This is a container, which refuses namespaces. Start it with --privileged, or with\n"
               "--cap-add SYS_ADMIN --security-opt seccomp=unconfined\n"
               "--security-opt apparmor=unconfined --security-opt systempaths=unconfined";
    }
    const std::string most = lineOf(system + "/proc/sys/user/max_user_namespaces");
    if (!most.empty() && most.size() < 3) {
        return "User namespaces are switched off here, or too few are allowed. Allow more:\n"
               "sudo sysctl user.max_user_namespaces=10000";
    }
    if (!isRoot && lineOf(system + "/proc/sys/kernel/unprivileged_userns_clone") == "0") {
        return "User namespaces are for root alone here. Run this program as root, or allow them:\n"
               "sudo sysctl kernel.unprivileged_userns_clone=1";
    }
    if (!isRoot && lineOf(system + "/proc/sys/kernel/apparmor_restrict_unprivileged_userns") == "1") {
        return "AppArmor keeps programs without a profile from making user namespaces here. Run\n"
               "this program as root, or give bubblewrap a profile:\n"
               "printf 'abi <abi/4.0>,\\nprofile bwrap /usr/bin/bwrap flags=(unconfined) { userns, }\\n' |\n"
               "sudo tee /etc/apparmor.d/bwrap && sudo apparmor_parser -r /etc/apparmor.d/bwrap";
    }
    return isRoot ? "Is this process itself in a sandbox? Run it outside." : "Run this program as root.";
}

std::string namespaceAdvice() {
    return namespaceAdvice(geteuid() == 0);
}

}  // namespace host
