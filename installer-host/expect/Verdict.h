#pragma once

#include <optional>
#include <string>

#include "installer-host/Judgement.h"
#include "installer-host/RunResult.h"
#include "installer-host/expect/Expectation.h"
#include "installer-host/report/JsonReport.h"

namespace host {

/// What a run comes to when its outcome is compared with an expectation.
struct Verdict {
    Judgement judgement;
    Json document;  ///< the run's, with its "expectation"
};

/// Judges a run. A fault counts as itself, unless its exit status is just what is expected; where there is none, any
/// difference gives NotAsExpected. `everything` is what compare() lists at most: keys that the run left alone may be
/// expected, too. `caseName` is that of a matrix's case, or empty. Without an expectation it is judge() that counts.
Verdict judgeAsExpected(const RunResult& result, const Changes& everything,
                        const std::optional<Expectation>& expectation, const std::string& caseName);

/// The section of a run's report about the "expectation" of its document; empty when that is null.
std::string expectationText(const Json& expectation);

}  // namespace host
