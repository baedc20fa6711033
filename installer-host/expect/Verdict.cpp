#include "installer-host/expect/Verdict.h"

#include "installer-host/expect/Difference.h"
#include "installer-host/report/Lines.h"
#include "installer-host/report/Text.h"

namespace host {

namespace {

/// All facts of the run, those included that its report leaves out. In the document bytes may be no UTF-8, which no
/// file holds.
Facts allFacts(RunResult result, const Changes& everything) {
    result.changes = everything;
    return factsOf(Json::parse(jsonText(runDocument(result, judge(result)))));
}

std::vector<Difference> differencesOf(const Facts& found, const Expectation& expectation,
                                      const std::optional<Facts>& expected, const std::string& caseName) {
    if (!expected) {
        return {{{FactKind::Entry, caseName, ""}, nullptr, nullptr, true}};
    }
    return compare(*expected, expectation.isComplete(), found);
}

Judgement judgedBy(const std::optional<Facts>& expected, bool isMet, const Judgement& own) {
    const FactName exitStatus{FactKind::ExitStatus, "", ""};
    const bool isFine = own.status == ExitStatus::Done || own.status == ExitStatus::SomethingChanged;
    const bool isExpected =
        expected && expected->count(exitStatus) != 0 && expected->at(exitStatus).value == static_cast<int>(own.status);
    if (!isFine && !isExpected) {
        return own;
    }
    if (!isMet) {
        return {ExitStatus::NotAsExpected, "the outcome is not the expected one; the report says what differs"};
    }
    return isFine ? own : Judgement{};
}

}  // namespace

Verdict judgeAsExpected(const RunResult& result, const Changes& everything,
                        const std::optional<Expectation>& expectation, const std::string& caseName) {
    const Judgement own = judge(result);
    if (!expectation) {
        return {own, runDocument(result, own)};
    }
    const std::optional<Facts> expected = expectation->of(caseName);
    const std::vector<Difference> differences =
        differencesOf(allFacts(result, everything), *expectation, expected, caseName);
    const Judgement judged = judgedBy(expected, differences.empty(), own);
    Verdict verdict{judged, runDocument(result, judged)};
    Json list = Json::array();
    for (const Difference& difference : differences) {
        list.push_back(toJson(difference));
    }
    verdict.document["expectation"] = {
        {"file", expectation->file()}, {"met", differences.empty()}, {"differences", list}};
    return verdict;
}

std::string expectationText(const Json& expectation) {
    if (expectation.is_null()) {
        return "";
    }
    std::string text = "\nExpectation " + escaped(expectation["file"].get<std::string>()) + "\n";
    for (const Json& difference : expectation["differences"]) {
        text += Line(2).addWords("! " + difference["text"].get<std::string>()).text();
    }
    return text + (expectation["met"] ? "  met\n" : "");
}

}  // namespace host
