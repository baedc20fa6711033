#include "installer-host/matrix/CaseRunner.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <system_error>
#include <thread>

namespace host {

namespace {

using Running = std::vector<std::unique_ptr<CaseProcess>>;

std::size_t jobsOf(const Options& options) {
    const unsigned wanted = options.matrix.jobs;
    return std::max(1U, wanted != 0 ? wanted : std::thread::hardware_concurrency());
}

/// Waits until the user asks for the end or one of the cases has something to tell.
void waitFor(const Running& running) {
    std::vector<pollfd> fds{{interruptionDescriptor(), POLLIN, 0}};
    for (const auto& one : running) {
        fds.push_back({one->reportEnd(), POLLIN, 0});
        fds.push_back({one->messagesEnd(), POLLIN, 0});
    }
    if (poll(fds.data(), fds.size(), -1) < 0 && errno != EINTR) {
        throw std::system_error(errno, std::generic_category(), "poll");
    }
}

}  // namespace

std::vector<CaseResult> runCases(const CaseSettings& settings, const CaseProgress& progress, int& signal) {
    std::vector<CaseResult> results(settings.list.cases.size());
    Running running;
    std::size_t next = 0, done = 0, failed = 0;
    while (!running.empty() || (next < results.size() && signal == 0)) {
        while (running.size() < jobsOf(settings.options) && next < results.size() && signal == 0) {
            running.push_back(std::make_unique<CaseProcess>(settings, next++));
        }
        waitFor(running);
        if (const int came = takeInterruption(); came != 0) {
            signal = came;
            std::for_each(running.begin(), running.end(), [=](const auto& one) { one->end(came); });
        }
        for (std::size_t i = running.size(); i-- > 0;) {
            if (!running[i]->hear()) {
                CaseResult& result = results[running[i]->index()] = running[i]->finish();
                failed += result.outcome == CaseResult::Outcome::Failed ? 1U : 0U;
                running.erase(running.begin() + static_cast<std::ptrdiff_t>(i));
                progress(++done, failed);
            }
        }
    }
    markSlow(results);
    return results;
}

}  // namespace host
