#pragma once

#include "installer-host/page/Markup.h"
#include "installer-host/report/JsonReport.h"

namespace host::page {

/// What was run, where and when, of the document of a matrix.
Markup matrixFacts(const Json& document);

/// What failed, the grids of products and languages, the totals, and the whole report of each case.
Markup matrixSections(const Json& document);

/// A grid for each install status. Each cell says what became of one case and leads to its report.
Markup gridSection(const Json& document);

/// The name of the anchor of a case's report.
std::string anchorOf(std::size_t caseIndex);

/// "✓ passed", and the marks that a case has besides: slow, an alert.
Markup caseState(const Json& oneCase);

}  // namespace host::page
