#include "installer-host/matrix/MatrixResult.h"

#include <algorithm>
#include <iterator>

#include "installer-host/report/Text.h"

namespace host {

namespace {

using std::chrono::milliseconds;

/// The exit statuses of runs, the worst first.
constexpr ExitStatus BY_GRAVITY[] = {
    ExitStatus::ExceptionLeftStep, ExitStatus::TimedOut,         ExitStatus::RootNotMade,
    ExitStatus::BundleUnusable,    ExitStatus::InterfaceRefused, ExitStatus::Usage,
    ExitStatus::StepFailed,        ExitStatus::NotStored,        ExitStatus::NotAsExpected,
};

auto gravityOf(ExitStatus status) {
    return std::end(BY_GRAVITY) - std::find(std::begin(BY_GRAVITY), std::end(BY_GRAVITY), status);
}

}  // namespace

milliseconds medianOf(const std::vector<CaseResult>& results) {
    std::vector<milliseconds> times;
    for (const CaseResult& result : results) {
        if (result.outcome != CaseResult::Outcome::NotRun) {
            times.push_back(result.duration);
        }
    }
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return times.empty() ? milliseconds(0) : *middle;
}

void markSlow(std::vector<CaseResult>& results) {
    constexpr milliseconds SLOW{1000};
    constexpr int TIMES_MEDIAN = 3;
    const milliseconds limit = std::max(SLOW, TIMES_MEDIAN * medianOf(results));
    for (CaseResult& result : results) {
        result.isSlow = result.duration > limit;
    }
}

Judgement judge(const MatrixResult& result) {
    if (result.signal != 0) {
        return {static_cast<ExitStatus>(SIGNALLED + result.signal), "the user ended the matrix"};
    }
    ExitStatus worst = result.unused.empty() ? ExitStatus::Done : ExitStatus::NotAsExpected;
    std::size_t failed = 0;
    for (const CaseResult& one : result.results) {
        failed += one.outcome == CaseResult::Outcome::Failed ? 1U : 0U;
        worst = gravityOf(one.status) > gravityOf(worst) ? one.status : worst;
    }
    if (worst == ExitStatus::Done) {
        return {};
    }
    return {worst,
            std::to_string(failed) + " of " + counted(result.results.size(), "case", "cases") + " failed" +
                (result.unused.empty() ? "" : "; expected, and not run: " + std::to_string(result.unused.size()))};
}

}  // namespace host
