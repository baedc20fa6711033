// Shows one alert, or two of them with TWICE, and prints the answers and what alerts have changed in the program:
//
//     AlertDriver [TWICE | IGNORE_CHILDREN | REAP_CHILDREN | NOTE | ERROR] MESSAGE BUTTON...
//
// Without NOTE and ERROR, it is a warning.

#include <sys/wait.h>

#include <clocale>
#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/Alert/Alert.h"
#include "tests/support/Process.h"

namespace {

/// As programs do that have many children and want to know of none.
void reapAll(int) {
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    const std::string first = arguments.at(0);
    const auto is = [&first](const char* mode) { return first == mode; };
    if (is("TWICE") || is("IGNORE_CHILDREN") || is("REAP_CHILDREN") || is("NOTE") || is("ERROR")) {
        arguments.erase(arguments.begin());
    }
    if (is("IGNORE_CHILDREN") || is("REAP_CHILDREN")) {
        std::signal(SIGCHLD, is("REAP_CHILDREN") ? reapAll : SIG_IGN);
    }
    const auto style = is("NOTE")    ? cv::AlertStyle::Informational
                       : is("ERROR") ? cv::AlertStyle::Critical
                                     : cv::AlertStyle::Warning;
    const std::size_t descriptors = test::openDescriptors();
    const cv::Alert alert{arguments.at(0), style, {arguments.begin() + 1, arguments.end()}};
    for (int i = 0; i < (is("TWICE") ? 2 : 1); ++i) {
        std::printf("answer %zu\n", cv::runAlert(alert));
    }
    if (std::string(std::setlocale(LC_ALL, nullptr)) != "C" || test::openDescriptors() != descriptors) {
        std::puts("the locale or the descriptors are not what they were");
    }
    return 0;
}
