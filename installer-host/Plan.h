#pragma once

#include <optional>
#include <string>

#include "installer-host/options/Options.h"
#include "installer-host/run/DryRunCopy.h"

namespace host {

/// The options with all that they name found. The copy of a dry run lives as long as its plan.
class Plan {
public:
    /// Finds the bundle and the root, and makes the copy that a dry run works on. Throws Failure: BundleUnusable when
    /// there is no bundle, RootNotMade when there is no root or it cannot be copied, Usage when it is the machine's
    /// own.
    explicit Plan(Options options);

    /// As given, but with absolute paths without symbolic links.
    const Options& options() const { return options_; }

    /// The root that is worked on, an absolute path: the one that was asked for, or a dry run's copy of it. Empty: the
    /// machine itself.
    const std::string& workedOn() const { return copy_ ? copy_->path() : options_.root; }

private:
    Options options_;
    std::optional<DryRunCopy> copy_;
};

}  // namespace host
