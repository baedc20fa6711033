#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "installer-host/run/ChildProcess.h"
#include "platform/Descriptor.h"

namespace host {

/// Learns which processes the bundle's code leaves running when its worker ends. It looks from outside of the sandbox,
/// so the code cannot keep it from looking, nor say something else.
///
/// In a sandbox nothing outlives the worker, because bubblewrap's outer process ends with the worker and all else ends
/// with that. So that process is stopped while the worker runs, and goes on after the look. The code cannot reach it.
class LeftProcesses {
public:
    /// Throws std::system_error.
    LeftProcesses();

    /// To be called while the worker, the only child of `starter`, waits for its go. `starter` is the first process of
    /// the sandbox, or this process where there is none. Without effect where the system does not show these processes.
    void begin(pid_t starter);

    /// Looks when the worker ends.
    Watcher watcher();

    /// Looks unless that was done, or the worker has not ended.
    void look();

    /// What was seen: the names of the processes, which these can choose. Not more than a few hundred.
    const std::vector<std::string>& names() const { return names_; }

private:
    pid_t starter_ = 0;
    cv::Descriptor worker_, outer_;
    cv::Descriptor end_;  ///< can be read when the worker has ended
    std::vector<std::string> names_;
};

}  // namespace host
