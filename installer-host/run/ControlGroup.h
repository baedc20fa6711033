#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// What a control group can limit, and the files that set the limit in the unified hierarchy and in the older ones.
struct Controller {
    const char* name;
    const char* unifiedFile;
    const char* separateFile;
};

constexpr Controller MEMORY_CONTROLLER{"memory", "memory.max", "memory.limit_in_bytes"};
constexpr Controller PROCESS_CONTROLLER{"pids", "pids.max", "pids.max"};

/// A control group (cgroup) of the kernel for one process and all that it starts, where the system lets this process
/// make one: as a rule for root, and for users whom the system leaves a part of the groups to. It is removed at the end
/// of the scope, when its processes are gone.
class ControlGroup {
public:
    ControlGroup() = default;
    ~ControlGroup();
    ControlGroup(const ControlGroup&) = delete;
    ControlGroup& operator=(const ControlGroup&) = delete;

    /// Makes a group with this limit for all its processes together, and moves `process`, which has not yet started any
    /// other, into it. False, with nothing changed, where that cannot be.
    bool limit(const Controller& controller, std::uint64_t most, pid_t process);

private:
    std::vector<std::string> folders_;
};

}  // namespace host
