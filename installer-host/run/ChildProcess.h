#pragma once

#include <chrono>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/Descriptor.h"

namespace host {

/// A pipe on which a child process tells its parent what happens, one JSON object a line.
class EventPipe {
public:
    EventPipe();

    /// The descriptor that the child finds open and writes to.
    int childEnd() const { return write_.get(); }

private:
    friend class ChildProcess;
    cv::Descriptor read_, write_;
};

/// Thrown when the user ends the run (SIGINT, SIGTERM, SIGHUP); the child is dead then. From the first child on these
/// signals have no other effect in this process.
struct Interrupted {
    int signal;
};

/// Ends this process by the signal, as its caller expects.
[[noreturn]] void endBySignal(int signal);

/// How a child process ended.
struct ChildEnd {
    bool timedOut = false;
    int exitStatus = 0;  ///< 0 to 255, or 128 + the signal that ended it
};

/// Runs `command` to its end and passes on its events. What it writes to standard output goes to standard error, since
/// standard output is for the report alone. The child dies with this process, and at `timeout` (0: never).
///
/// Throws Interrupted, std::system_error when the child cannot be started, and what `onEvent` throws; the child is dead
/// then.
ChildEnd runChild(const std::vector<std::string>& command, EventPipe& events, std::chrono::seconds timeout,
                  const std::function<void(const nlohmann::json&)>& onEvent);

/// The same for a child that has nothing to tell.
ChildEnd runChild(const std::vector<std::string>& command);

}  // namespace host
