#pragma once

#include "installer-host/matrix/MatrixResult.h"

namespace host {

/// The report for a program, as docs/report.schema.json describes it.
Json matrixDocument(const MatrixResult& result, const Judgement& judgement);

/// "passed", "failed" or "not run".
const char* nameOf(CaseResult::Outcome outcome);

}  // namespace host
