#pragma once

#include "installer-host/page/Markup.h"
#include "installer-host/report/JsonReport.h"

namespace host::page {

// The parts of a page that is made from the document of a run. A page of a matrix has them once for each case.

/// What a document's exit status means: "✓ done".
Markup verdictOf(const Json& document);

/// What went wrong and what to do about it; empty when nothing did.
Markup errorNote(const Json& document);

/// How much changed, number by number.
Markup countList(const Json& counts);

/// What was run, where, when and by whom.
Markup runFacts(const Json& report);

/// The sections that say what came of it. Their headings have this level.
Markup runSections(const Json& report, int level);

}  // namespace host::page
