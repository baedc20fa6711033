#include "installer-host/Plan.h"
#include "installer-host/commands/Commands.h"
#include "installer-host/commands/Output.h"
#include "installer-host/report/JsonReport.h"
#include "installer-host/report/TextReport.h"
#include "installer-host/run/Listener.h"

namespace host {

ExitStatus checkCommand(const Options& given) {
    const Plan plan(given);
    const Options& options = plan.options();
    const RunResult result = runWorker(options, nullptr);
    const Judgement judgement = judge(result);
    printReport(
        options, [&] { return checkText(result, options.quiet); }, [&] { return checkDocument(result, judgement); });
    explain(judgement);
    return judgement.status;
}

}  // namespace host
