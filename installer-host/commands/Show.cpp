#include "installer-host/Plan.h"
#include "installer-host/commands/Commands.h"
#include "installer-host/commands/Output.h"
#include "installer-host/look/Snapshot.h"
#include "installer-host/report/JsonReport.h"
#include "installer-host/report/TextReport.h"

namespace host {

ExitStatus showCommand(const Options& given) {
    const Plan plan(given);
    const Options& options = plan.options();
    const Snapshot snapshot = takeSnapshot(RootFolder(plan.workedOn()));
    const Judgement judgement = judge(snapshot);
    print(options.format == Format::Text ? showText(snapshot, options.root)
                                         : formatted(showDocument(snapshot, options.root, judgement), options.format));
    explain(judgement);
    return judgement.status;
}

}  // namespace host
