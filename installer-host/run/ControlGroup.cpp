#include "installer-host/run/ControlGroup.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "installer-host/run/KernelFile.h"

namespace host {

namespace {

constexpr const char* HIERARCHIES = "/sys/fs/cgroup";

/// Whether `word` is one of the words of `text`.
bool hasWord(const std::string& text, char separator, const std::string& word) {
    std::istringstream words(text);
    for (std::string each; std::getline(words, each, separator);) {
        if (each == word) {
            return true;
        }
    }
    return false;
}

/// The group of the unified hierarchy nearest to `own` in which a group can have all limits; empty when there is none.
/// A process is in one group of that hierarchy only.
std::string unifiedParent(std::string own) {
    for (;; own.erase(own.rfind('/'))) {
        std::string enabled;
        std::getline(std::ifstream(HIERARCHIES + own + "/cgroup.subtree_control"), enabled);
        if (hasWord(enabled, ' ', MEMORY_CONTROLLER.name) && hasWord(enabled, ' ', PROCESS_CONTROLLER.name)) {
            return HIERARCHIES + own;
        }
        if (own.empty()) {
            return {};
        }
    }
}

/// Where a new group can be made.
struct Place {
    std::string parent;  ///< empty: nowhere
    const char* file = nullptr;
};

Place placeFor(const Controller& controller) {
    std::ifstream list("/proc/self/cgroup");
    Place unified;
    for (std::string line; std::getline(list, line);) {
        const std::size_t first = line.find(':');
        const std::size_t second = line.find(':', first + 1);
        if (second == std::string::npos) {
            continue;
        }
        const std::string controllers = line.substr(first + 1, second - first - 1);
        const std::string own = line.substr(second + 1) == "/" ? "" : line.substr(second + 1);
        if (hasWord(controllers, ',', controller.name)) {
            return {HIERARCHIES + ("/" + controllers) + own, controller.separateFile};
        }
        if (controllers.empty()) {
            unified = {unifiedParent(own), controller.unifiedFile};
        }
    }
    return unified;
}

/// A group of that name with nobody in it is what a host left that was killed, and whose process had this number.
bool makeGroup(const std::string& folder) {
    const auto make = [&] { return mkdir(folder.c_str(), 0755) == 0; };
    return make() || (errno == EEXIST && rmdir(folder.c_str()) == 0 && make());
}

/// Waits a moment for the kernel to be done with the processes that were in it.
void removeGroup(const std::string& folder) {
    constexpr int ATTEMPTS = 500;
    for (int i = 0; i < ATTEMPTS && rmdir(folder.c_str()) != 0 && errno == EBUSY; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

}  // namespace

ControlGroup::~ControlGroup() {
    for (const std::string& folder : folders_) {
        removeGroup(folder);
    }
}

bool ControlGroup::limit(const Controller& controller, std::uint64_t most, pid_t process) {
    const Place place = placeFor(controller);
    if (place.parent.empty()) {
        return false;
    }
    const std::string folder = place.parent + "/installer-host-" + std::to_string(process);
    const bool isNew = std::find(folders_.begin(), folders_.end(), folder) == folders_.end();
    if (isNew && !makeGroup(folder)) {
        return false;
    }
    if (writeKernelFile(folder + "/" + place.file, std::to_string(most)) &&
        writeKernelFile(folder + "/cgroup.procs", std::to_string(process))) {
        if (isNew) {
            folders_.push_back(folder);
        }
        return true;
    }
    if (isNew) {
        rmdir(folder.c_str());
    }
    return false;
}

}  // namespace host
