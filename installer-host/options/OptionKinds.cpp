#include "installer-host/options/OptionKinds.h"

#include <climits>

namespace host {

namespace {

constexpr unsigned LONGEST_TIMEOUT = 86400;

}  // namespace

std::string quoted(const std::string& text) {
    constexpr std::size_t LONGEST = 60;
    return "'" + text.substr(0, LONGEST) + (text.size() > LONGEST ? "..." : "") + "'";
}

CLI::Option* addFlag(CLI::App& app, const std::string& name, bool& value, const std::string& help) {
    return app.add_flag(name, value, help)->disable_flag_override();
}

const std::string& checkedPath(const std::string& name, const std::string& path) {
    if (path.empty()) {
        throw CLI::ValidationError(name, "the name is empty; is a variable unset?");
    }
    if (path.size() >= PATH_MAX) {
        throw CLI::ValidationError(name, "the name is longer than " + std::to_string(PATH_MAX - 1) + " bytes");
    }
    return path;
}

const std::string& checkedFolder(const std::string& name, const std::string& folder) {
    checkedPath(name, folder);
    if (folder.front() == '-') {
        throw CLI::ValidationError(name, quoted(folder) + " looks like an option; put ./ before the name of a folder");
    }
    return folder;
}

CLI::Option* addFolders(CLI::App& app, const std::string& name, std::vector<std::string>& folders,
                        const std::string& help) {
    const auto add = [=, &folders](const std::vector<std::string>& given) {
        for (const std::string& folder : given) {
            folders.push_back(checkedFolder(name, folder));
        }
    };
    return app.add_option_function<std::vector<std::string>>(name, add, help)
        ->type_name("DIR")
        ->allow_extra_args(false);
}

void addBundle(CLI::App& app, Options& options) {
    app.add_option("BUNDLE", options.bundle, "The plug-in, a folder such as CorvaneInstall.bundle")->required();
}

const std::vector<std::pair<std::string, Format>> FORMATS = {
    {"text", Format::Text}, {"json", Format::Json}, {"html", Format::Html}};

void addFormat(CLI::App& app, Options& options) {
    addChoice<Format>(app, "--format", options.format, FORMATS,
                      "The format of the report: text, JSON, or an HTML page that needs nothing but itself (default: "
                      "text)");
}

void addTimeout(CLI::App& app, Options& options) {
    addNumber(app, "--timeout", "SECONDS", options.timeout, 0U, LONGEST_TIMEOUT,
              "End the run when the bundle's code takes longer than SECONDS; 0: no limit (default: 60)");
}

CLI::Option* addPlace(CLI::App& app, Options& options, const std::string& rootHelp, const std::string& machineHelp) {
    CLI::Option* root =
        app.add_option_function<std::string>(
               "--root", [&](const std::string& given) { options.root = checkedFolder("--root", given); }, rootHelp)
            ->type_name("DIR");
    return addFlag(app, "--machine", options.machine, machineHelp)->excludes(root);
}

void requirePlace(const Options& options) {
    if (!options.machine && options.root.empty()) {
        throw CLI::RequiredError(
            "say where to work: --root DIR for a private root, or --machine for the machine itself",
            CLI::ExitCodes::RequiredError);
    }
}

}  // namespace host
