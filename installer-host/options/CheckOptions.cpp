#include "installer-host/options/Commands.h"
#include "installer-host/options/OptionKinds.h"

namespace host {

void addCheckCommand(CLI::App& app, Options& options) {
    CLI::App& check = *app.add_subcommand(
        "check", "Check that a bundle is a loadable plug-in: registration, identifiers, exports, interface");
    check.footer("Example:\n  installer-host check build/release/CorvaneInstall.bundle");
    addBundle(check, options);
    addFormat(check, options);
    addTimeout(check, options);
    addManners(check, options);
    check.callback([&] {
        options.command = Command::Check;
        options.installation.steps.clear();
        checkedPath("BUNDLE", options.bundle);
    });
}

}  // namespace host
