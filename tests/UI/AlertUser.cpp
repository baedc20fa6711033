#include "tests/UI/AlertUser.h"

#include <sstream>

namespace test {

ProcessResult runAlertUser(const Strings& arguments, const ProcessOptions& options) {
    // The packages that the script needs are those of the system's Python.
    Strings command{
        "xvfb-run",         "--auto-servernum", "--server-args=-screen 0 800x600x24 -noreset", "dbus-run-session", "--",
        "/usr/bin/python3", CV_ALERT_USER};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(command, options);
}

Strings linesWith(const std::string& output, const std::string& keyword) {
    Strings found;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, keyword.size() + 1, keyword + " ") == 0) {
            found.push_back(line.substr(keyword.size() + 1));
        }
    }
    return found;
}

}  // namespace test
