#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "platform/Descriptor.h"

namespace host {

/// A pipe between a child process and this one.
struct Pipe {
    /// Throws std::system_error. Reading from it never waits.
    Pipe();

    cv::Descriptor read, write;
};

/// What a watcher wants next.
enum class Watching {
    GoOn,     ///< to be called again
    Stop,     ///< nothing more; its descriptor may be closed now
    EndChild  ///< the child to be ended at once, with all that it started
};

/// A descriptor to look after while a child runs.
struct Watcher {
    int fd;
    std::function<Watching()> onReady;  ///< called when `fd` can be read, or its other side is closed
};

/// A program to run, and what to do meanwhile.
struct ChildOrder {
    std::vector<std::string> command;
    int input = 0;                    ///< what the child has as its standard input
    int output = 2;                   ///< where the child's standard output and standard error go
    std::vector<int> descriptors;     ///< what the child has open, too, under the same numbers
    std::function<bool()> prepare;    ///< called in the child, which ends when the answer is false; may be empty
    bool isApart = false;             ///< in a process group of its own: what the terminal sends does not reach it
    std::chrono::seconds timeout{0};  ///< 0: none
    std::vector<Watcher> watchers;    ///< the first is served first
    std::function<void()> endOthers;  ///< ends what killing the child would leave behind; may be empty
};

/// How a child process ended.
struct ChildEnd {
    enum class How {
        ByItself,
        TimedOut,     ///< killed when its time was over
        Interrupted,  ///< killed when the user ended the run (SIGINT, SIGTERM, SIGHUP)
        Refused       ///< killed because a watcher asked for it
    };

    How how = How::ByItself;
    int exitStatus = 0;  ///< ByItself: 0 to 255, or 128 + the signal that ended it
    int signal = 0;      ///< Interrupted: the signal that came
};

/// Runs a program to its end, in the time that it has, whatever it does. When this returns or throws, the child and
/// whatever it started are gone, and the watchers have seen the rest of what they watch; only a process that the system
/// itself cannot end is left behind. All other children of this process must have been ended by `endOthers`.
///
/// From the first child on, the signals by which a user ends a program have no other effect in this process than to end
/// its children. Throws std::system_error when the child cannot be started, and what a watcher throws.
ChildEnd runChild(const ChildOrder& order);

/// Waits for the end of a child of this process, and takes it off the list of processes. Returns its status as
/// waitpid(2) has it, or -1 when it is none.
int reap(pid_t child);

/// The signal by which the user asked for the end since the last call, or 0.
int takeInterruption();

/// Can be read when the user has asked for the end.
int interruptionDescriptor();

/// Thrown when the user ends the run before there is anything to report.
struct Interrupted {
    int signal;
};

/// Ends this process by the signal, as its caller expects.
[[noreturn]] void endBySignal(int signal);

}  // namespace host
