#include "installer-host/options/Commands.h"
#include "installer-host/options/OptionKinds.h"

namespace host {

void addShowCommand(CLI::App& app, Options& options) {
    CLI::App& show = *app.add_subcommand(
        "show", "Show the current preferences, and the Finder flags of the vendor's folder and icon file");
    show.footer("Example:\n  installer-host show --root /tmp/root");
    addPlace(show, options, "Look at the private root DIR. This or --machine is required",
             "Look at the machine itself");
    addFormat(show, options);
    show.callback([&] {
        options.command = Command::Show;
        options.installation.steps.clear();
        requirePlace(options);
    });
}

}  // namespace host
