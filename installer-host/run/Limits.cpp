#include "installer-host/run/Limits.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>

#include "installer-host/run/Sandbox.h"

namespace host {

namespace {

constexpr std::uint64_t MEBIBYTE = std::uint64_t{1} << 20U;
constexpr std::uint64_t MOST_MEMORY = 2048 * MEBIBYTE;
constexpr std::uint64_t MOST_ADDRESSES = 4096 * MEBIBYTE - MEBIBYTE;
constexpr std::uint64_t MOST_FILE_SIZE = 4096 * MEBIBYTE - MEBIBYTE;
constexpr std::uint64_t MOST_PROCESSES = 256;
constexpr std::uint64_t MOST_DESCRIPTORS = 1024;

/// Lowers the limit; one that is lower stays.
bool lower(pid_t process, __rlimit_resource resource, std::uint64_t most) {
    rlimit limit{};
    if (prlimit(process, resource, nullptr, &limit) != 0) {
        return false;
    }
    limit.rlim_max = std::min<std::uint64_t>(limit.rlim_max, most);
    limit.rlim_cur = std::min(limit.rlim_cur, limit.rlim_max);
    return prlimit(process, resource, &limit, nullptr) == 0;
}

std::string mebibytes(std::uint64_t bytes) {
    return std::to_string(bytes / MEBIBYTE) + " MiB";
}

}  // namespace

void Limits::apply(pid_t process) {
    groupMemory_ = group_.limit(MEMORY_CONTROLLER, MOST_MEMORY, process);
    groupProcesses_ = group_.limit(PROCESS_CONTROLLER, MOST_PROCESSES, process);
    processMemory_ = lower(process, RLIMIT_AS, MOST_ADDRESSES);
    // The kernel does not hold root to it.
    userProcesses_ = lower(process, RLIMIT_NPROC, MOST_PROCESSES) && getuid() != 0;
    fileSize_ = lower(process, RLIMIT_FSIZE, MOST_FILE_SIZE);
    lower(process, RLIMIT_NOFILE, MOST_DESCRIPTORS);
    lower(process, RLIMIT_CORE, 0);
}

std::vector<std::string> Limits::sentences(std::chrono::seconds timeout) const {
    std::vector<std::string> all;
    all.push_back("time: " + (timeout.count() == 0 ? "not limited" : std::to_string(timeout.count()) + " s"));
    all.push_back("memory: " + (groupMemory_     ? mebibytes(MOST_MEMORY) + " for all processes together"
                                : processMemory_ ? mebibytes(MOST_ADDRESSES) + " for each process"
                                                 : "not limited"));
    all.push_back("processes: " + (groupProcesses_ || userProcesses_
                                       ? std::to_string(MOST_PROCESSES)
                                       : "not limited; there is no control group to be had, and root has no limit"));
    all.push_back("size of a file: " + (fileSize_ ? mebibytes(MOST_FILE_SIZE) : "not limited"));
    all.push_back("temporary files: " + std::to_string(SANDBOX_TEMPORARY_MEBIBYTES) + " MiB");
    return all;
}

}  // namespace host
