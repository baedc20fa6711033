#include "installer-host/run/ProcessTable.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>
#include <system_error>

namespace host {

namespace {

/// Reads the line that /proc has of a process; the name in it may hold anything, parentheses, too.
ProcessEntry readEntry(const std::string& id) {
    std::ifstream file("/proc/" + id + "/stat");
    std::string line;
    std::getline(file, line, '\0');  // unlike the stream's buffer, this throws nothing when the process is gone by now
    const std::size_t begin = std::min(line.find('('), line.size());
    const std::size_t end = std::max(begin, std::min(line.rfind(')'), line.size()));
    ProcessEntry entry;
    entry.id = std::stoi(id);
    entry.name = line.substr(std::min(begin + 1, end), end - std::min(begin + 1, end));
    std::istringstream rest(line.substr(std::min(line.size(), end + 1)));
    rest >> entry.state >> entry.parent;
    return entry;
}

/// Whether it has not ended: not even while its parent takes note of that, which is when it is 'X'.
bool isRunning(const ProcessEntry& entry) {
    return entry.state != 0 && std::string_view("ZXx").find(entry.state) == std::string_view::npos;
}

/// For kernels that do not list the children of a process (CONFIG_PROC_CHILDREN).
std::vector<pid_t> childrenInTable(pid_t process) {
    std::vector<pid_t> children;
    for (const ProcessEntry& entry : processTable()) {
        if (entry.parent == process) {
            children.push_back(entry.id);
        }
    }
    return children;
}

}  // namespace

std::vector<ProcessEntry> processTable() {
    std::vector<ProcessEntry> table;
    std::error_code ignored;
    for (const auto& folder : std::filesystem::directory_iterator("/proc", ignored)) {
        const std::string id = folder.path().filename();
        if (id.find_first_not_of("0123456789") == std::string::npos) {
            const ProcessEntry entry = readEntry(id);
            if (entry.state != 0) {
                table.push_back(entry);
            }
        }
    }
    return table;
}

pid_t parentOf(pid_t process) {
    return readEntry(std::to_string(process)).parent;
}

std::vector<pid_t> childrenOf(pid_t process) {
    std::vector<pid_t> children;
    std::error_code ignored;
    std::filesystem::directory_iterator task("/proc/" + std::to_string(process) + "/task", ignored);
    for (; task != std::filesystem::directory_iterator(); task.increment(ignored)) {
        std::ifstream list(task->path() / "children");
        if (!list.is_open()) {
            return childrenInTable(process);
        }
        children.insert(children.end(), std::istream_iterator<pid_t>(list), {});
    }
    return children;
}

std::vector<ProcessEntry> descendantsOf(pid_t ancestor) {
    std::vector<ProcessEntry> found;
    std::vector<pid_t> left = childrenOf(ancestor);
    while (!left.empty()) {
        const ProcessEntry entry = readEntry(std::to_string(left.back()));
        left.pop_back();
        if (isRunning(entry)) {
            found.push_back(entry);
            const std::vector<pid_t> children = childrenOf(entry.id);
            left.insert(left.end(), children.begin(), children.end());
        }
    }
    return found;
}

}  // namespace host
