#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "installer-host/RunResult.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/terminal/Terminal.h"
#include "platform/Descriptor.h"

namespace host {

/// Shows the alerts of the bundle's code, which has no display of its own to ask on: on the display, or on the terminal
/// where there is none, or else not at all. A process of its own waits for the user's answers, started with the first
/// alert, so that a time-out holds while an alert waits. Keeps a record of all alerts.
class AlertDesk {
public:
    /// `bundle` is the bundle's path; titles name it. `panelProgram` is the path of cv-alert. Throws std::system_error.
    AlertDesk(const std::string& bundle, std::string panelProgram);

    /// The socket on which the bundle's code asks (CV_ALERT_SOCKET).
    int socket() const { return theirs_.get(); }

    std::vector<Watcher> watchers();

    /// Takes an alert that still waits off the screen.
    void end();

    /// The alerts up to now.
    const std::vector<AlertRecord>& records() const { return records_; }

private:
    Watching beginToAsk();
    Watching hear();
    void hearLine(const std::string& line);

    std::string title_, panelProgram_;
    cv::Descriptor ours_, theirs_;
    Pipe told_;
    std::string line_;
    pid_t pid_ = 0;
    std::optional<Still> still_;  ///< from the first alert on: the process that asks writes to the terminal, too
    std::vector<AlertRecord> records_;
};

}  // namespace host
