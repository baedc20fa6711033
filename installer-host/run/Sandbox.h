#pragma once

#include <string>
#include <vector>

#include "installer-host/ExitStatus.h"
#include "installer-host/look/RootFolder.h"
#include "platform/Descriptor.h"

namespace host {

/// What temporary files in the sandbox may hold together, in each of the two places that they can be in.
constexpr unsigned SANDBOX_TEMPORARY_MEBIBYTES = 256;

/// The view of the machine that the bundle's code has: its bundle, the system's programs and libraries for reading, and
/// DIR/Library and DIR/Applications at /Library and /Applications when there is a private root; nothing else. Made by
/// bubblewrap for the command that runs in it, with namespaces of its own, without capabilities, and under a filter of
/// system calls (SystemCallFilter.h).
class Sandbox {
public:
    /// `root` is a private root that outlives this object and has its folders, or null for none. Throws Failure
    /// (RootNotMade).
    explicit Sandbox(const RootFolder* root);

    /// Shows the bundle at `path`, an absolute path of the machine without symbolic links, and returns where it is seen
    /// inside. Throws Failure (BundleUnusable).
    std::string showBundle(const std::string& path);

    /// Shows the worker's program with the port's library. Returns where the program is seen. Throws Failure
    /// (RootNotMade).
    std::string showWorker(const std::string& program);

    /// Gives the command inside an environment variable; it has none but those that are given and a few of the user's.
    void setVariable(const std::string& name, const std::string& value);

    /// Prepares the process that is about to become the command, which must have one thread. False when that cannot be,
    /// after it said why on standard error.
    bool prepare() const;

    /// The command that runs `command` inside. bubblewrap writes to the descriptor `info` which process is the first
    /// one inside (--info-fd), and starts the command when it has read a byte from `go` (--block-fd). Valid once.
    std::vector<std::string> wrap(const std::vector<std::string>& command, int info, int go) const;

    /// Whether the code inside can use the machine's devices (Devices.h), and not just see them.
    bool hasDevices() const { return hasDevices_; }

    /// The descriptors that bubblewrap is to have open, beside those of the call of wrap().
    std::vector<int> descriptors() const;

private:
    void add(const std::vector<std::string>& arguments);
    void addFile(const std::string& text, const std::string& place);
    void addOpen(const char* option, cv::Descriptor file, const std::string& place);
    void addSystem();
    void addDevices();
    void addProcesses();

    const RootFolder* root_;
    bool hasDevices_;
    std::vector<std::string> arguments_;
    std::vector<cv::Descriptor> open_;
    cv::Descriptor filter_;
};

/// Why a run could not start in the sandbox although bubblewrap was called, and what the user can do. `said` is what
/// bubblewrap wrote.
Failure sandboxRefused(const std::string& said);

/// Throws Failure (RootNotMade) with the way to install it when bubblewrap is missing.
void requireBubblewrap();

}  // namespace host
