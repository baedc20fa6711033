#include "installer-host/journal/Undo.h"
#include "installer-host/Activity.h"
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

UndoResult putBack(const Options& options, const RootFolder& root) {
    const Activity activity("putting back what the run changed");
    return undo(options.journal, root, options.root, options.dryRun, endIfInterrupted);
}

}  // namespace

ExitStatus undoCommand(const Options& given) {
    const Plan plan(given);
    const Options& options = plan.options();
    const RootFolder root(options.root);
    const UndoResult result = putBack(options, root);
    const Judgement judgement = judge(result);
    printReport(
        options, [&] { return options.quiet ? undoProblemsText(result) : undoText(result); },
        [&] { return undoDocument(result, judgement); });
    explain(judgement);
    return judgement.status;
}

}  // namespace host
