#include "installer-host/Plan.h"
#include "installer-host/commands/Commands.h"
#include "installer-host/commands/OneRun.h"
#include "installer-host/commands/Output.h"
#include "installer-host/report/JsonReport.h"
#include "installer-host/report/TextReport.h"

namespace host {

ExitStatus runCommand(const Options& given) {
    const Plan plan(given);
    const Options& options = plan.options();
    const RunResult result = performRun(plan);
    const Judgement judgement = judge(result);
    explain(judgement);
    print(options.format == Format::Text ? runText(result) : formatted(runDocument(result, judgement), options.format));
    return judgement.status;
}

}  // namespace host
