#include "installer-host/matrix/MatrixDocument.h"

#include <algorithm>
#include <functional>

#include "installer-host/report/Phrases.h"

namespace host {

namespace {

using Outcome = CaseResult::Outcome;

Json orNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

bool hasChanged(const CaseResult& result) {
    return result.report.contains("changed") && result.report["changed"] == true;
}

Json caseJson(const CaseList& list, const MatrixCase& one, const CaseResult& result) {
    const bool wasRun = result.outcome != Outcome::NotRun;
    return {{"name", one.name},
            {"product", one.product},
            {"language", one.language},
            {"status", list.statuses[one.status].name},
            {"outcome", nameOf(result.outcome)},
            {"exitStatus", wasRun ? Json(static_cast<int>(result.status)) : Json(nullptr)},
            {"milliseconds", result.duration.count()},
            {"slow", result.isSlow},
            {"messages", result.messages},
            {"report", result.report}};
}

/// The totals of the cases that `counts` chooses.
Json totals(const MatrixResult& matrix, const std::function<bool(const MatrixCase&)>& counts) {
    std::size_t passed = 0, failed = 0, notRun = 0, changed = 0;
    for (std::size_t i = 0; i < matrix.results.size(); ++i) {
        const CaseResult& result = matrix.results[i];
        if (counts(matrix.list.cases[i])) {
            ++(result.outcome == Outcome::Passed ? passed : result.outcome == Outcome::Failed ? failed : notRun);
            changed += hasChanged(result) ? 1U : 0U;
        }
    }
    return {{"cases", passed + failed + notRun},
            {"passed", passed},
            {"failed", failed},
            {"notRun", notRun},
            {"changed", changed}};
}

/// The totals for each code that a member of the cases has, in the order in which they come first.
Json totalsByCode(const MatrixResult& matrix, const char* name, std::int32_t MatrixCase::*member) {
    Json list = Json::array();
    std::vector<std::int32_t> codes;
    for (const MatrixCase& one : matrix.list.cases) {
        const std::int32_t code = one.*member;
        if (std::find(codes.begin(), codes.end(), code) == codes.end()) {
            codes.push_back(code);
            Json entry{{name, code}};
            entry.update(totals(matrix, [=](const MatrixCase& other) { return other.*member == code; }));
            list.push_back(entry);
        }
    }
    return list;
}

Json totalsByStatus(const MatrixResult& matrix) {
    Json list = Json::array();
    for (std::size_t i = 0; i < matrix.list.statuses.size(); ++i) {
        const InstallStatus& status = matrix.list.statuses[i];
        Json entry{{"status", status.name}, {"file", orNull(status.file)}};
        entry.update(totals(matrix, [=](const MatrixCase& one) { return one.status == i; }));
        list.push_back(entry);
    }
    return list;
}

Json countsJson(const MatrixResult& matrix) {
    Json counts = totals(matrix, [](const MatrixCase&) { return true; });
    const auto& results = matrix.results;
    counts["slow"] =
        std::count_if(results.begin(), results.end(), [](const CaseResult& result) { return result.isSlow; });
    counts["leftProcesses"] = std::count_if(results.begin(), results.end(), leftProcesses);
    return counts;
}

Json expectationJson(const MatrixResult& matrix) {
    if (!matrix.expectation) {
        return nullptr;
    }
    const bool isMet =
        matrix.unused.empty() && std::all_of(matrix.results.begin(), matrix.results.end(), [](const CaseResult& one) {
            return one.outcome != Outcome::NotRun && one.report.contains("expectation") &&
                   one.report["expectation"]["met"] == true;
        });
    return {{"file", matrix.expectation->file()}, {"met", isMet}, {"unused", matrix.unused}};
}

}  // namespace

const char* nameOf(CaseResult::Outcome outcome) {
    return outcome == Outcome::Passed ? "passed" : outcome == Outcome::Failed ? "failed" : "not run";
}

Json matrixDocument(const MatrixResult& result, const Judgement& judgement) {
    const Options& options = result.options;
    Json report = beginDocument(Command::Matrix);
    report.update({{"bundle", options.bundle},
                   {"bundleIdentifier", orNull(result.bundle.identifier)},
                   {"bundleVersion", orNull(result.bundle.version)},
                   {"root", orNull(options.root)},
                   {"started", timeText(result.started)},
                   {"rerun", orNull(options.matrix.rerun)},
                   {"cases", Json::array()}});
    for (std::size_t i = 0; i < result.results.size(); ++i) {
        report["cases"].push_back(caseJson(result.list, result.list.cases[i], result.results[i]));
    }
    report["products"] = totalsByCode(result, "product", &MatrixCase::product);
    report["languages"] = totalsByCode(result, "language", &MatrixCase::language);
    report["statuses"] = totalsByStatus(result);
    report["counts"] = countsJson(result);
    report["expectation"] = expectationJson(result);
    return endDocument(report, judgement);
}

}  // namespace host
