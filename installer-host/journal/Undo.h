#pragma once

#include <functional>
#include <string>

#include "installer-host/journal/UndoResult.h"
#include "installer-host/look/RootFolder.h"

namespace host {

/// Puts back what the journal in the file at `path` tells, wherever the root still holds what the run left. A journal
/// that was undone before changes nothing; one of a run that was killed is compared with what stands in the root now.
/// When all that can be put back is, the journal is marked as undone, and the one before it is the next to undo.
///
/// `rootPath` is where the root is; empty: the machine. Throws Failure when the journal cannot be read, belongs to
/// another root, or another one must be undone first; nothing has changed then. `endIfInterrupted` is called now and
/// then; what it throws ends the undo, and the same call may be made again.
UndoResult undo(const std::string& path, const RootFolder& root, const std::string& rootPath, bool dryRun,
                const std::function<void()>& endIfInterrupted);

}  // namespace host
