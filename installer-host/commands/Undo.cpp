#include "installer-host/journal/Undo.h"
#include "installer-host/Plan.h"
#include "installer-host/commands/Commands.h"
#include "installer-host/commands/Output.h"
#include "installer-host/report/UndoReport.h"

namespace host {

namespace {

Judgement judge(const UndoResult& result) {
    if (result.hasFaults()) {
        return {ExitStatus::NotStored,
                "not everything could be put back; the report says what and why\n"
                "Remove the reason and undo the same journal again."};
    }
    return {};
}

}  // namespace

ExitStatus undoCommand(const Options& given) {
    const Plan plan(given);
    const Options& options = plan.options();
    const RootFolder root(options.root);
    const UndoResult result = undo(options.journal, root, options.root, options.dryRun, endIfInterrupted);
    const Judgement judgement = judge(result);
    print(options.format == Format::Text ? undoText(result)
                                         : formatted(undoDocument(result, judgement), options.format));
    explain(judgement);
    return judgement.status;
}

}  // namespace host
