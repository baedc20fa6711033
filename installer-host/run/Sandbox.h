#pragma once

#include <string>
#include <vector>

#include "platform/Descriptor.h"

namespace host {

/// A private root: a view of the machine in which DIR/Library and DIR/Applications stand at /Library and /Applications
/// and all else can only be read, made by bubblewrap for the command that runs in it.
class Sandbox {
public:
    /// `root` is an absolute path; the two folders are made in it when they are missing. Throws Failure (RootNotMade).
    explicit Sandbox(const std::string& root);

    /// The path at which `path`, an absolute path of the machine, is seen inside. For a path that the private folders
    /// hide, that is a place of its own.
    std::string show(const std::string& path);

    /// The command that runs `command` inside, with a home folder that ends with it and a user of its own in
    /// /etc/passwd. Valid once.
    std::vector<std::string> wrap(const std::vector<std::string>& command) const;

    /// What the command needs to have open.
    std::vector<int> descriptors() const { return {passwd_.get(), group_.get()}; }

private:
    std::vector<std::string> mounts_;
    cv::Descriptor passwd_, group_;
};

/// Throws Failure (RootNotMade) with the way to install it when bubblewrap is missing.
void requireBubblewrap();

}  // namespace host
