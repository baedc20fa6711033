#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

#include "installer-host/run/ChildProcess.h"
#include "platform/Descriptor.h"

namespace host {

/// The first process of the sandbox's process namespace, which bubblewrap makes: when it ends, the kernel ends all that
/// runs in there, and it has not ended before they have.
class FirstProcess {
public:
    /// `onMade` is called with the process before the sandbox's command starts.
    explicit FirstProcess(std::function<void(pid_t)> onMade) : onMade_(std::move(onMade)) {}

    /// The descriptors for Sandbox::wrap().
    int info() const { return info_.write.get(); }
    int go() const { return go_.read.get(); }

    Watcher watcher();

    /// The process; 0 while it is not known.
    pid_t process() const { return id_; }

    /// Ends everything in the sandbox and waits for that, but for a few seconds only: the kernel itself may hold up a
    /// process.
    void end();

private:
    Watching hear();
    bool begin(const std::string& told);

    std::function<void(pid_t)> onMade_;
    Pipe info_, go_;
    std::string told_;
    pid_t id_ = 0;
    cv::Descriptor process_;
};

}  // namespace host
