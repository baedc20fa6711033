#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "installer-host/Finding.h"
#include "installer-host/Installation.h"
#include "platform/Result.h"

namespace host {

// The bundle's code runs in a program of its own, the worker: inside the private root if there is one, and where it can
// hang, crash or throw without taking the report with it. The host gives it an order in its arguments (Listener.cpp),
// and it reports what happens to the host in events (WorkerMain.cpp). The bundle's code shares the worker's process and
// can write whatever it likes to the same pipe: Transcript.h says how the host treats that.

/// What the worker is to do.
struct WorkerOrder {
    int eventFd = -1;           ///< where it writes its events
    std::string bundle;         ///< an absolute path, as the worker sees it
    Installation installation;  ///< without steps: the bundle is to be checked
};

/// The order as the worker's arguments, its name not included.
std::vector<std::string> toArguments(const WorkerOrder& order);

/// The order in the worker's arguments, which include its name; nothing when they are not an order.
std::optional<WorkerOrder> parseOrder(int argc, const char* const* argv);

/// The worker runs. It waits for a byte on its standard input before it loads the bundle's code.
struct Started {};

/// A step is called next.
struct StepBegins {
    Step step;
    std::uint32_t flags;  ///< resultFlags
};

/// The call of a step came back.
struct StepEnds {
    Step step;
    std::uint32_t flags;
    std::string exceptionType;  ///< empty when it returned
    std::string exceptionMessage;
};

/// Something that the steps stored is not on the disk.
struct NotStored {
    cv::Fault fault;
};

/// The end: the bundle cannot be loaded, or its interface was refused.
struct Refused {
    ExitStatus status;
    std::string text;
};

/// The end: all was done.
struct Finished {};

using Event = std::variant<Started, StepBegins, StepEnds, Finding, NotStored, Refused, Finished>;

/// The longest line that an event takes, with its line feed.
constexpr std::size_t LONGEST_EVENT = 65536;

/// The most events that the worker sends, and how many faults it tells after each of the two steps.
constexpr std::size_t MOST_EVENTS = 3000;
constexpr std::size_t MOST_FAULTS = 1000;

/// The event as a line of JSON with its line feed. Long texts are cut, and bytes that are not UTF-8 are replaced.
std::string encode(const Event& event);

/// The event of a line without its line feed; nothing when it is not of the form that encode() gives one.
std::optional<Event> decode(std::string_view line);

}  // namespace host
