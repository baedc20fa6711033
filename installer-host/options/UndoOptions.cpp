#include "installer-host/options/Commands.h"
#include "installer-host/options/OptionKinds.h"

namespace host {

namespace {

constexpr const char* UNDO_FOOTER = R"(Example:
  Install with a journal, and take it back:
    installer-host run --product 5100 --root /tmp/root \
        --journal /tmp/5100.json CorvaneInstall.bundle
    installer-host undo /tmp/5100.json --root /tmp/root)";

}  // namespace

void addUndoCommand(CLI::App& app, Options& options) {
    CLI::App& undo = *app.add_subcommand("undo", "Put back what a run with a journal changed");
    undo.footer(UNDO_FOOTER);
    undo.add_option("JOURNAL", options.journal, "The file that 'run --journal' wrote")->required();
    addPlace(undo, options, "The private root that the run worked on. This or --machine is required",
             "The run worked on the machine itself");
    addFlag(undo, "--dry-run", options.dryRun, "Only report what would be put back");
    addFormat(undo, options);
    addManners(undo, options);
    undo.callback([&] {
        options.command = Command::Undo;
        options.installation.steps.clear();
        checkedPath("JOURNAL", options.journal);
        requirePlace(options);
    });
}

}  // namespace host
