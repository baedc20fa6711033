#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace host {

/// A process as /proc has it.
struct ProcessEntry {
    pid_t id = 0;
    pid_t parent = 0;
    std::string name;  ///< of its program, cut after 15 bytes; any bytes
    char state = 0;    ///< as proc(5) has it; 'Z' or 'X' for one that has ended
};

/// The processes that there are; without those that end meanwhile.
std::vector<ProcessEntry> processTable();

/// The parent of a process; 0 when there is no such process.
pid_t parentOf(pid_t process);

/// The children of a process, those that have ended included.
std::vector<pid_t> childrenOf(pid_t process);

/// The processes that `ancestor` started, and that these started, and so on, as far as they still run. To find those
/// that have lost a parent, too, it must be the one that gets them: the first one of a namespace, or a subreaper
/// (PR_SET_CHILD_SUBREAPER). One that hands over to another while this function looks may be missing.
std::vector<ProcessEntry> descendantsOf(pid_t ancestor);

}  // namespace host
