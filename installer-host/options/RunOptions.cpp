#include <cstdint>
#include <limits>

#include "installer-host/options/Commands.h"
#include "installer-host/options/OptionKinds.h"

namespace host {

namespace {

constexpr const char* RUN_FOOTER = R"(Examples:
  Install product 5100 in French into a private root; the bundle's code cannot
  change the machine's own files:
    mkdir -p /tmp/root
    installer-host run --product 5100 --language 1 --root /tmp/root \
        CorvaneInstall.bundle
  Show as JSON what this would change, without changing anything:
    installer-host run --product 5100 --root /tmp/root --dry-run \
        --format json CorvaneInstall.bundle)";

constexpr std::int32_t INT32_LEAST = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t INT32_MOST = std::numeric_limits<std::int32_t>::max();

}  // namespace

void addRunCommand(CLI::App& app, Options& options) {
    CLI::App& run = *app.add_subcommand("run", "Load a plug-in, run its steps, report what changed");
    run.footer(RUN_FOOTER);
    addBundle(run, options);
    addNumber(run, "--product", "CODE", options.installation.product, INT32_LEAST, INT32_MOST,
              "The numeric code of the product that is installed, for example 5100",
              "; a product is given by its numeric code, for example 5100")
        ->required();
    addNumber(run, "--language", "CODE", options.installation.language, INT32_LEAST, INT32_MOST,
              "The installation's language as a classic Mac OS code: 0 English, 1 French, 2 German, 3 Italian, "
              "6 Spanish, 11 Japanese (default: 0)",
              "; a language is given by its classic Mac OS code, for example 0 for English or 1 for French");
    addCalls(run, options);
    CLI::Option* machine = addPlace(run, options,
                                    "Work in a private root: DIR/Library and DIR/Applications take the place of "
                                    "/Library and /Applications, and the "
                                    "bundle's code can change nothing else. This or --machine is required",
                                    "Work on the machine itself, where the bundle's code may do what you may");
    CLI::Option* dryRun =
        addFlag(run, "--dry-run", options.dryRun, "Work on a copy of the root, which itself stays unchanged");
    addFolders(run, "--scope", options.scope,
               "With --machine: look at DIR; repeat the option for more folders (default: /Library and /Applications)")
        ->needs(machine)
        ->excludes(dryRun);
    addFile(run, "--journal", options.journal,
            "Write into FILE, a new file, what undoing the run takes; see 'installer-host undo --help'")
        ->excludes(dryRun);
    addFlag(run, "--changes-exit", options.changesExit,
            "End with status 10 when something changed, or in a dry run would have changed");
    addExpectation(run, options);
    addFormat(run, options);
    addTimeout(run, options);
    addManners(run, options, ", and list unchanged preferences and mere changes of times, too");
    run.callback([&] {
        options.command = Command::Run;
        checkedPath("BUNDLE", options.bundle);
        requirePlace(options);
        if (options.machine && options.scope.empty()) {
            options.scope = {"/Library", "/Applications"};
        }
    });
}

}  // namespace host
