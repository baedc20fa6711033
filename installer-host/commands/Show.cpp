#include <unistd.h>

#include "installer-host/Activity.h"
#include "installer-host/Message.h"
#include "installer-host/Plan.h"
#include "installer-host/commands/Commands.h"
#include "installer-host/commands/Output.h"
#include "installer-host/report/JsonReport.h"
#include "installer-host/report/ShowText.h"

namespace host {

namespace {

Snapshot lookAt(const std::string& root, const Selection& selection) {
    const Activity activity("looking at the preferences");
    return select(takeSnapshot(RootFolder(root)), selection);
}

/// Prints the value that somebody else stored. A script gets its bytes; a terminal is to do nothing by them.
void printValue(const std::string& value) {
    print(isatty(STDOUT_FILENO) == 1 ? printable(value) : value);
}

ExitStatus showState(const Options& options) {
    const Snapshot snapshot = lookAt(options.root, options.selection);
    const Judgement judgement = judge(snapshot, options.selection);
    if (options.format == Format::Text && !options.quiet && !options.selection.domain.empty()) {
        printValue(selectionText(snapshot, options.selection));
    } else {
        printReport(
            options, [&] { return options.quiet ? unreadableText(snapshot) : showText(snapshot, options.root); },
            [&] { return showDocument(snapshot, options.root, options.selection, judgement); });
    }
    explain(judgement);
    return judgement.status;
}

ExitStatus showDiff(const Options& options) {
    const Snapshot first = lookAt(options.root, options.selection);
    const Snapshot second = lookAt(options.diff, options.selection);
    const SnapshotDiff diff = compare({first, options.root}, {second, options.diff});
    const Judgement judgement = judge(diff);
    printReport(
        options, [&] { return options.quiet ? unreadableText(diff) : diffText(diff, options.root, options.diff); },
        [&] { return diffDocument(diff, options.root, options.diff, options.selection, judgement); });
    explain(judgement);
    return judgement.status;
}

}  // namespace

ExitStatus showCommand(const Options& given) {
    const Plan plan(given);
    return plan.options().diff.empty() ? showState(plan.options()) : showDiff(plan.options());
}

}  // namespace host
