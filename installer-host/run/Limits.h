#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "installer-host/run/ControlGroup.h"

namespace host {

/// Limits on what the bundle's code can take of the machine.
class Limits {
public:
    /// Sets them for `process`, which has not yet started any other, and for all that it starts. Limits that the system
    /// does not allow to be set are left out.
    void apply(pid_t process);

    /// Which limits apply, and which do not, a line each: what is limited, a colon, and to what. `timeout` 0: none.
    std::vector<std::string> sentences(std::chrono::seconds timeout) const;

private:
    ControlGroup group_;
    bool groupMemory_ = false, groupProcesses_ = false;
    bool processMemory_ = false, userProcesses_ = false, fileSize_ = false;
};

}  // namespace host
