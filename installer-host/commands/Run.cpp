#include <optional>

#include "installer-host/OutputFile.h"
#include "installer-host/Plan.h"
#include "installer-host/commands/Commands.h"
#include "installer-host/commands/OneRun.h"
#include "installer-host/commands/Output.h"
#include "installer-host/expect/Expectation.h"
#include "installer-host/expect/ExpectationFile.h"
#include "installer-host/expect/Verdict.h"
#include "installer-host/report/JsonReport.h"
#include "installer-host/report/TextReport.h"

namespace host {

namespace {

/// The expectation that the user named, if any, which must be one of a single run.
std::optional<Expectation> readExpectation(const std::string& file) {
    if (file.empty()) {
        return std::nullopt;
    }
    const Expectation expectation = Expectation::read(file);
    if (expectation.isForMatrix()) {
        throw Failure(ExitStatus::Usage, "the expectation '" + file + "' is that of a matrix",
                      "Compare it with: installer-host matrix --expect '" + file + "'");
    }
    return expectation;
}

std::string reportText(const RunResult& result, const Json& expectation, bool onlyProblems) {
    const bool isMet = expectation.is_null() || expectation["met"];
    const std::string compared = onlyProblems && isMet ? "" : expectationText(expectation);
    return (onlyProblems ? runProblemsText(result) : runText(result)) + compared;
}

}  // namespace

ExitStatus runCommand(const Options& given) {
    const std::optional<Expectation> expectation = readExpectation(given.expect);
    const Plan plan(given);
    const Options& options = plan.options();
    Changes everything;
    const RunResult result = performRun(plan, expectation ? &everything : nullptr);
    const Verdict verdict = judgeAsExpected(result, everything, expectation, "");
    if (!options.writeExpect.empty() && result.end != WorkerEnd::Interrupted) {
        replaceFile(options.writeExpect, expectationFileText(factsOf(verdict.document)));
    }
    explain(verdict.judgement);
    printReport(
        options, [&] { return reportText(result, verdict.document["expectation"], options.quiet); },
        [&]() -> const Json& { return verdict.document; });
    return verdict.judgement.status;
}

}  // namespace host
