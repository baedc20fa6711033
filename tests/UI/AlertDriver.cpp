// Shows one alert, or two of them with TWICE, and prints the answers and what alerts have changed in the program:
//
//     AlertDriver [TWICE | IGNORE_CHILDREN | REAP_CHILDREN] MESSAGE BUTTON...

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
    const bool isMode = first == "TWICE" || first == "IGNORE_CHILDREN" || first == "REAP_CHILDREN";
    if (isMode) {
        arguments.erase(arguments.begin());
    }
    if (first == "IGNORE_CHILDREN") {
        std::signal(SIGCHLD, SIG_IGN);
    } else if (first == "REAP_CHILDREN") {
        std::signal(SIGCHLD, reapAll);
    }
    const std::size_t descriptors = test::openDescriptors();
    const cv::Alert alert{arguments.at(0), cv::AlertStyle::Warning, {arguments.begin() + 1, arguments.end()}};
    for (int i = 0; i < (first == "TWICE" ? 2 : 1); ++i) {
        std::printf("answer %zu\n", cv::runAlert(alert));
    }
    if (std::string(std::setlocale(LC_ALL, nullptr)) != "C" || test::openDescriptors() != descriptors) {
        std::puts("the locale or the descriptors are not what they were");
    }
    return 0;
}
