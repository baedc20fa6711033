#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "installer-host/expect/Expectation.h"
#include "installer-host/look/BundleInfo.h"
#include "installer-host/matrix/CaseList.h"
#include "installer-host/options/Options.h"
#include "installer-host/report/JsonReport.h"

namespace host {

/// What became of one case.
struct CaseResult {
    enum class Outcome { NotRun, Passed, Failed };
    Outcome outcome = Outcome::NotRun;
    ExitStatus status = ExitStatus::Done;  ///< that of the run
    std::chrono::milliseconds duration{0};
    bool isSlow = false;
    std::string messages;  ///< what was said on standard error
    Json report;           ///< the document of the run; null for NotRun
    std::string text;      ///< the same for a reader, without its head
};

/// All that became known in a matrix: its reports depend on this alone.
struct MatrixResult {
    Options options;  ///< what was asked for, the paths absolute
    BundleInfo bundle;
    std::chrono::system_clock::time_point started;
    CaseList list;
    std::vector<CaseResult> results;         ///< of list.cases, in the same order
    std::optional<Expectation> expectation;  ///< as the user named it
    std::vector<std::string> unused;         ///< the cases that it expects, and that were not asked for
    int signal = 0;                          ///< by which the user ended the matrix; 0: the user did not
};

/// Whether something was left running by the case's steps.
inline bool leftProcesses(const CaseResult& result) {
    return result.report.contains("leftProcesses") && !result.report["leftProcesses"].empty();
}

/// Marks the cases that took over a second, and over three times the median of those that were run.
void markSlow(std::vector<CaseResult>& results);

/// The median of how long the cases took that were run; 0 when none was.
std::chrono::milliseconds medianOf(const std::vector<CaseResult>& results);

/// What a matrix comes to: the worst of its cases, or how the user ended it.
Judgement judge(const MatrixResult& result);

}  // namespace host
