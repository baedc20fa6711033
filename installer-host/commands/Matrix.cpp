#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>

#include "installer-host/OutputFile.h"
#include "installer-host/Plan.h"
#include "installer-host/commands/Commands.h"
#include "installer-host/commands/Output.h"
#include "installer-host/expect/ExpectationFile.h"
#include "installer-host/matrix/CaseRunner.h"
#include "installer-host/matrix/JUnit.h"
#include "installer-host/matrix/MatrixDocument.h"
#include "installer-host/matrix/MatrixText.h"
#include "installer-host/run/ThrowAwayFolder.h"
#include "installer-host/terminal/MovingLine.h"

namespace host {

namespace {

/// The cases that the expectation names, and that this matrix neither ran nor left out because they had passed before.
std::vector<std::string> unusedOf(const MatrixResult& result) {
    std::vector<std::string> names = result.list.passed;
    for (const MatrixCase& one : result.list.cases) {
        names.push_back(one.name);
    }
    return result.expectation ? result.expectation->unused(names) : std::vector<std::string>();
}

/// Writes what --write-expect asks for. What was cut short is no expectation.
void writeExpectation(const MatrixResult& result) {
    std::vector<std::pair<CaseParts, Facts>> cases;
    for (std::size_t i = 0; i < result.results.size(); ++i) {
        if (result.results[i].outcome == CaseResult::Outcome::NotRun) {
            return;
        }
        cases.emplace_back(partsOf(result.list.cases[i].name), factsOf(result.results[i].report));
    }
    replaceFile(result.options.writeExpect, expectationFileText(cases));
}

MatrixResult performMatrix(const Options& options) {
    MatrixResult result;
    result.options = options;
    result.started = std::chrono::system_clock::now();
    result.bundle = readBundleInfo(options.bundle);
    result.list = casesOf(options.matrix);
    if (!options.expect.empty()) {
        result.expectation = Expectation::read(options.expect);
    }
    result.unused = unusedOf(result);
    std::optional<ThrowAwayFolder> empty;
    const std::string root = options.root.empty() ? empty.emplace("/").path() : options.root;
    ProgressLine line("cases", result.list.cases.size());
    const auto show = [&](std::size_t done, std::size_t failed) {
        line.show(done, failed == 0 ? "" : std::to_string(failed) + " failed");
    };
    result.results = runCases({result.options, root, result.expectation, result.list}, show, result.signal);
    return result;
}

}  // namespace

ExitStatus matrixCommand(const Options& given) {
    const Plan plan(given);
    const MatrixResult result = performMatrix(plan.options());
    const Judgement judgement = judge(result);
    const Json document = matrixDocument(result, judgement);
    const Options& options = result.options;
    if (!options.writeExpect.empty()) {
        writeExpectation(result);
    }
    if (!options.matrix.junit.empty()) {
        replaceFile(options.matrix.junit, matrixJUnit(result));
    }
    explain(judgement);
    printReport(
        options, [&] { return options.quiet ? matrixProblemsText(result) : matrixText(result, document); },
        [&]() -> const Json& { return document; });
    return judgement.status;
}

}  // namespace host
