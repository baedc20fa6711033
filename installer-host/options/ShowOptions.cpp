#include "installer-host/options/Commands.h"
#include "installer-host/options/OptionKinds.h"

namespace host {

namespace {

constexpr const char* SHOW_FOOTER = R"(Examples:
  Show all that there is:
    installer-host show --root /tmp/root
  Print one value, for a script; the exit status is 11 when it is not there:
    installer-host show --root /tmp/root --domain com.corvane.updater \
        --key UpdateInterval
  Show what differs in another root; the exit status is 10 when something does:
    installer-host show --root /tmp/root --diff /tmp/other)";

/// A name of a preference domain or a key. Without this check, an option that lacks its value would take the next one.
std::string checkedName(const std::string& option, const std::string& name) {
    if (name.empty() || name.front() == '-') {
        throw CLI::ValidationError(option, quoted(name) + " is not a name");
    }
    return name;
}

}  // namespace

void addShowCommand(CLI::App& app, Options& options) {
    CLI::App& show = *app.add_subcommand(
        "show", "Show the current preferences, and the Finder flags of the vendor's folder and icon file");
    show.footer(SHOW_FOOTER);
    addPlace(show, options, "Look at the private root DIR. This or --machine is required",
             "Look at the machine itself");
    CLI::Option* domain =
        show.add_option_function<std::string>(
                "--domain",
                [&](const std::string& given) { options.selection.domain = checkedName("--domain", given); },
                "Only the preferences of DOMAIN, for example com.corvane.updater; status 11 when there are none")
            ->type_name("DOMAIN");
    show.add_option_function<std::string>(
            "--key", [&](const std::string& given) { options.selection.key = checkedName("--key", given); },
            "Only the value of KEY, alone; A/B is what is under B in A; status 11 when there is none")
        ->type_name("KEY")
        ->needs(domain);
    show.add_option_function<std::string>(
            "--diff", [&](const std::string& given) { options.diff = checkedFolder("--diff", given); },
            "Show what differs in the private root DIR; status 10 when something does")
        ->type_name("DIR");
    addFormat(show, options);
    addManners(show, options);
    show.callback([&] {
        options.command = Command::Show;
        options.installation.steps.clear();
        requirePlace(options);
    });
}

}  // namespace host
