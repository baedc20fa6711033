#pragma once

#include <string>
#include <string_view>

namespace host {

// The log of what this program does (--log). Each event is a line:
//
//     2026-11-22T06:10:05.123Z 3f9c2a7e1b04d586 begins pre-install step
//
// the time in UTC, the run's number, a word for the kind of event, and what happened, with control characters escaped.
// Several programs may write to one file: lines stay whole.

/// From now on the events of this process, and of its copies by fork(), go to the file at `path`, after what it holds;
/// it is made when it is not there. The run gets a random number. Throws Failure (RootNotMade) when the file cannot be
/// written, is no regular file, or is a link or has a second name, by which somebody could have any file written.
void openLog(const std::string& path);

/// Adds an event, where there is a log. `kind` is one word. When the line cannot be written the user is told, once, and
/// the log ends there.
void logEvent(std::string_view kind, std::string_view what);

}  // namespace host
