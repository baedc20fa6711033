#include "installer-host/options/OptionKinds.h"

#include <algorithm>
#include <climits>
#include <cstdint>

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
        throw CLI::ValidationError(
            name, quoted(folder) + " looks like an option; put ./ before the name of a file or folder");
    }
    return folder;
}

CLI::Option* addFile(CLI::App& app, const std::string& name, std::string& file, const std::string& help) {
    const auto take = [=, &file](const std::string& given) { file = checkedFolder(name, given); };
    return app.add_option_function<std::string>(name, take, help)->type_name("FILE");
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

void addCalls(CLI::App& app, Options& options) {
    addChoice<std::vector<Step>>(
        app, "--step", options.installation.steps,
        {{"pre", {Step::PreInstall}}, {"post", {Step::PostInstall}}, {"both", {Step::PreInstall, Step::PostInstall}}},
        "The steps to run (default: both)");
    addNumber<std::uint16_t>(app, "--block-version", "N", options.installation.blockVersion, 0, 0xFFFF,
                             "The version to write into the parameter block (default: " +
                                 std::to_string(XCOD_BLOCK_VERSION) + ", the one that plug-ins accept)");
    addChoice<bool>(app, "--entry", options.installation.direct, {{"table", false}, {"direct", true}},
                    "Call the steps through the interface table, or the exported functions PreInstall and PostInstall "
                    "directly (default: table)");
}

void addExpectation(CLI::App& app, Options& options) {
    CLI::Option* expect = addFile(
        app, "--expect", options.expect,
        "End with status 8, and say what differs, when the outcome is not the one that FILE describes: a report "
        "in JSON, or what --write-expect wrote");
    addFile(app, "--write-expect", options.writeExpect, "Write into FILE what --expect is to find the next time")
        ->excludes(expect);
}

const std::vector<std::pair<std::string, Format>> FORMATS = {
    {"text", Format::Text}, {"json", Format::Json}, {"html", Format::Html}};

const std::vector<std::pair<std::string, ColorWhen>> COLORS = {
    {"auto", ColorWhen::Auto}, {"always", ColorWhen::Always}, {"never", ColorWhen::Never}};

void addFormat(CLI::App& app, Options& options) {
    addChoice<Format>(app, "--format", options.format, FORMATS,
                      "The format of the report: text, JSON, or an HTML page that needs nothing but itself (default: "
                      "text)");
}

void addTimeout(CLI::App& app, Options& options) {
    addNumber(app, "--timeout", "SECONDS", options.timeout, 0U, LONGEST_TIMEOUT,
              "End the run when the bundle's code takes longer than SECONDS; 0: no limit (default: 60)");
}

CLI::Option* addRoot(CLI::App& app, Options& options, const std::string& help) {
    const auto take = [&](const std::string& given) { options.root = checkedFolder("--root", given); };
    return app.add_option_function<std::string>("--root", take, help)->type_name("DIR");
}

void addManners(CLI::App& app, Options& options, const std::string& verboseHelp) {
    CLI::Option* quiet =
        addFlag(app, "-q,--quiet", options.quiet, "Print nothing when all is well, and only what went wrong otherwise");
    app.add_flag_function(
           "-v,--verbose",
           [&](std::int64_t times) { options.verbose = static_cast<unsigned>(std::min<std::int64_t>(times, 2)); },
           "Say on standard error what is done" + verboseHelp + "; twice: with times and commands")
        ->disable_flag_override()
        ->excludes(quiet);
    addFile(app, "--log", options.log, "Add a line for each event to FILE, with the time and a number for the run");
    addChoice<ColorWhen>(app, "--color", options.color, COLORS,
                         "When to use colours; auto: on a terminal, unless NO_COLOR is set (default: auto)");
}

CLI::Option* addPlace(CLI::App& app, Options& options, const std::string& rootHelp, const std::string& machineHelp) {
    CLI::Option* root = addRoot(app, options, rootHelp);
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
