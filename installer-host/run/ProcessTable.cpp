#include "installer-host/run/ProcessTable.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <system_error>

namespace host {

namespace {

/// Reads the line that /proc has of a process; the name in it may hold anything, parentheses, too.
ProcessEntry readEntry(const std::string& id) {
    std::ifstream file("/proc/" + id + "/stat");
    const std::string line{std::istreambuf_iterator<char>(file), {}};
    const std::size_t begin = std::min(line.find('('), line.size());
    const std::size_t end = std::max(begin, std::min(line.rfind(')'), line.size()));
    ProcessEntry entry;
    entry.id = std::stoi(id);
    entry.name = line.substr(std::min(begin + 1, end), end - std::min(begin + 1, end));
    std::istringstream rest(line.substr(std::min(line.size(), end + 1)));
    rest >> entry.state >> entry.parent;
    return entry;
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

std::vector<ProcessEntry> descendantsOf(pid_t ancestor) {
    const std::vector<ProcessEntry> table = processTable();
    std::set<pid_t> family{ancestor};
    for (std::size_t size = 0; size != family.size();) {
        size = family.size();
        for (const ProcessEntry& entry : table) {
            if (family.count(entry.parent) != 0) {
                family.insert(entry.id);
            }
        }
    }
    std::vector<ProcessEntry> found;
    std::copy_if(table.begin(), table.end(), std::back_inserter(found), [&](const ProcessEntry& entry) {
        return entry.id != ancestor && entry.state != 'Z' && family.count(entry.id) != 0;
    });
    return found;
}

}  // namespace host
