#pragma once

#include <optional>
#include <string>
#include <vector>

#include "installer-host/Installation.h"

namespace host {

// The bundle's code runs in a program of its own, the worker: inside the private root if there is one, and where it can
// hang, crash or throw without taking the report with it. The host gives it an order in its arguments (Listener.cpp),
// and it tells the host what happens in events (WorkerMain.cpp), JSON objects with the key "event", one a line:
//
//     started                                     the worker runs
//     stepBegins   step flags                     before a step is called
//     stepEnds     step flags type message        afterwards; a type when an exception left it
//     finding      subject ok text status         a finding of `check`
//     notStored    what reason                    something that the steps stored is not on the disk
//     failure      status text                    the end, by a Failure
//     finished                                    the end

constexpr const char* EVENT_STARTED = "started";
constexpr const char* EVENT_STEP_BEGINS = "stepBegins";
constexpr const char* EVENT_STEP_ENDS = "stepEnds";
constexpr const char* EVENT_FINDING = "finding";
constexpr const char* EVENT_NOT_STORED = "notStored";
constexpr const char* EVENT_FAILURE = "failure";
constexpr const char* EVENT_FINISHED = "finished";

/// What the worker is to do.
struct WorkerOrder {
    int eventFd = -1;           ///< where it writes its events
    std::string bundle;         ///< an absolute path, as the worker sees it
    Installation installation;  ///< without steps: the bundle is to be checked
};

/// The order as the worker's arguments, its name not included.
std::vector<std::string> toArguments(const WorkerOrder& order);

/// The order that the worker's arguments, with its name, are; nothing when they are none.
std::optional<WorkerOrder> parseOrder(int argc, const char* const* argv);

}  // namespace host
