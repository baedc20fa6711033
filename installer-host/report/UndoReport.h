#pragma once

#include <string>

#include "installer-host/Judgement.h"
#include "installer-host/journal/UndoResult.h"
#include "installer-host/report/JsonReport.h"

namespace host {

// The reports of an undo: for a reader, and for a program.

std::string undoText(const UndoResult& result);

/// Of the same report what could not be put back; empty when nothing failed.
std::string undoProblemsText(const UndoResult& result);
Json undoDocument(const UndoResult& result, const Judgement& judgement);

}  // namespace host
