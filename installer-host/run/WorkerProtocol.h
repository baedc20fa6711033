#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "installer-host/Options.h"

namespace host {

// The bundle's code runs in a program of its own, the worker: inside the private root if there is one, and where it can
// hang, crash or throw without taking the report with it. The host gives it an order in its arguments, and it tells the
// host what happens in events, JSON objects with the key "event", one a line:
//
//     started                                     the worker runs
//     stepBegins   step flags                     before a step is called
//     stepEnds     step flags type message        afterwards; a type when an exception left it
//     finding      subject ok text status         a finding of `check`
//     notStored    what reason                    something that the steps stored is not on the disk
//     failure      status text                    the end, by a Failure
//     finished                                    the end

/// What the worker is to do.
struct WorkerOrder {
    int eventFd = -1;         ///< where it writes its events
    std::string bundle;       ///< an absolute path, as the worker sees it
    std::vector<Step> steps;  ///< to be run, in this order; none: the bundle is to be checked
    std::int32_t product = 0;
    std::int32_t language = 0;
    std::uint16_t blockVersion = 0;
    bool direct = false;  ///< call PreInstall and PostInstall themselves, not through the interface table
};

/// The order as the worker's arguments, its name not included.
std::vector<std::string> toArguments(const WorkerOrder& order);

/// The order that the worker's arguments, with its name, are; nothing when they are none.
std::optional<WorkerOrder> parseOrder(int argc, const char* const* argv);

/// Writes one event in the worker. What cannot be written is lost: the host is gone then, and this process with it.
void writeEvent(int fd, const nlohmann::json& event);

}  // namespace host
