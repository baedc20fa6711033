#include "installer-host/Options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <climits>
#include <limits>
#include <memory>
#include <string>
#include <system_error>

#include "installer-host/HelpFormatter.h"
#include "installer-host/NearestWord.h"

namespace host {

namespace {

constexpr const char* VERSION_TEXT = "installer-host " INSTALLER_HOST_VERSION;

constexpr const char* MAIN_FOOTER = R"(Examples:
  installer-host check CorvaneInstall.bundle
  installer-host run --product 5100 --language 1 --root /tmp/root \
      CorvaneInstall.bundle
  installer-host show --root /tmp/root

Exit status:
   0  done
   1  a step set the failure bit
   2  wrong usage
   3  the bundle is missing or malformed, or it cannot be loaded
   4  the factory or the interface was refused
   5  a step let an exception escape, or ended the process
   6  the private root, or something else that a run needs, is missing or
      could not be made
   7  something could not be stored or read
   9  the time-out ended the run
  10  something changed, with --changes-exit
 129 to 143  128 and the number of the signal by which the user ended the run)";

constexpr const char* RUN_FOOTER = R"(Examples:
  Install product 5100 in French into a private root; the bundle's code cannot
  change the machine's own files:
    mkdir -p /tmp/root
    installer-host run --product 5100 --language 1 --root /tmp/root \
        CorvaneInstall.bundle
  Show as JSON what this would change, without changing anything:
    installer-host run --product 5100 --root /tmp/root --dry-run \
        --format json CorvaneInstall.bundle)";

/// What the user wrote, for a message of one line.
std::string quoted(const std::string& text) {
    constexpr std::size_t LONGEST = 60;
    return "'" + text.substr(0, LONGEST) + (text.size() > LONGEST ? "..." : "") + "'";
}

/// The whole of `text` as a decimal number from `min` to `max`, or an error that says what is expected.
template <typename Number>
Number parseNumber(const std::string& name, const std::string& text, Number min, Number max, const std::string& hint) {
    Number value{};
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || value < min || value > max) {
        throw CLI::ValidationError(name, quoted(text) + " is not a whole number from " + std::to_string(min) + " to " +
                                             std::to_string(max) + hint);
    }
    return value;
}

/// Adds an option with a number, written in decimal digits only.
template <typename Number>
CLI::Option* addNumber(CLI::App& app, const std::string& name, const std::string& valueName, Number& value, Number min,
                       Number max, const std::string& help, const std::string& hint = "") {
    return app
        .add_option_function<std::string>(
            name, [=, &value](const std::string& text) { value = parseNumber(name, text, min, max, hint); }, help)
        ->type_name(valueName);
}

CLI::Option* addFlag(CLI::App& app, const std::string& name, bool& value, const std::string& help) {
    return app.add_flag(name, value, help)->disable_flag_override();
}

/// Adds an option with one of a few words.
template <typename Value>
void addChoice(CLI::App& app, const std::string& name, Value& value,
               const std::vector<std::pair<std::string, Value>>& choices, const std::string& help) {
    std::string names;
    for (const auto& choice : choices) {
        names += (names.empty() ? "" : "|") + choice.first;
    }
    const auto choose = [=, &value](const std::string& text) {
        for (const auto& [word, meaning] : choices) {
            if (word == text) {
                value = meaning;
                return;
            }
        }
        throw CLI::ValidationError(name, quoted(text) + " is not one of " + names);
    };
    app.add_option_function<std::string>(name, choose, help)->type_name(names);
}

constexpr std::int32_t INT32_LEAST = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t INT32_MOST = std::numeric_limits<std::int32_t>::max();
constexpr unsigned LONGEST_TIMEOUT = 86400;

void addFormat(CLI::App& app, Options& options) {
    addChoice<Format>(app, "--format", options.format, {{"text", Format::Text}, {"json", Format::Json}},
                      "The format of the report (default: text)");
}

void addTimeout(CLI::App& app, Options& options) {
    addNumber(app, "--timeout", "SECONDS", options.timeout, 0U, LONGEST_TIMEOUT,
              "End the run when the bundle's code takes longer than SECONDS; 0: no limit (default: 60)");
}

/// A path as it stands on the command line.
const std::string& checkedPath(const std::string& name, const std::string& path) {
    if (path.empty()) {
        throw CLI::ValidationError(name, "the name is empty; is a variable unset?");
    }
    if (path.size() >= PATH_MAX) {
        throw CLI::ValidationError(name, "the name is longer than " + std::to_string(PATH_MAX - 1) + " bytes");
    }
    return path;
}

/// The same for a folder's path. Without this, an option that lacks its value would take the next option as its value.
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

/// Adds the two options that say where the command works, and returns the second, --machine.
CLI::Option* addPlace(CLI::App& app, Options& options, const std::string& rootHelp, const std::string& machineHelp) {
    CLI::Option* root =
        app.add_option_function<std::string>(
               "--root", [&](const std::string& given) { options.root = checkedFolder("--root", given); }, rootHelp)
            ->type_name("DIR");
    return addFlag(app, "--machine", options.machine, machineHelp)->excludes(root);
}

void addBundle(CLI::App& app, Options& options) {
    app.add_option("BUNDLE", options.bundle, "The plug-in, a folder such as CorvaneInstall.bundle")->required();
}

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
    addChoice<std::vector<Step>>(
        run, "--step", options.installation.steps,
        {{"pre", {Step::PreInstall}}, {"post", {Step::PostInstall}}, {"both", {Step::PreInstall, Step::PostInstall}}},
        "The steps to run (default: both)");
    addNumber<std::uint16_t>(run, "--block-version", "N", options.installation.blockVersion, 0, 0xFFFF,
                             "The version to write into the parameter block (default: " +
                                 std::to_string(XCOD_BLOCK_VERSION) + ", the one that plug-ins accept)");
    addChoice<bool>(run, "--entry", options.installation.direct, {{"table", false}, {"direct", true}},
                    "Call the steps through the interface table, or the exported functions PreInstall and PostInstall "
                    "directly (default: table)");
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
    addFlag(run, "--changes-exit", options.changesExit,
            "End with status 10 when something changed, or in a dry run would have changed");
    addFormat(run, options);
    addTimeout(run, options);
    addFlag(run, "--verbose", options.verbose, "Report progress on standard error; list unchanged preferences, too");
}

void addCheckCommand(CLI::App& app, Options& options) {
    CLI::App& check = *app.add_subcommand(
        "check", "Check that a bundle is a loadable plug-in: registration, identifiers, exports, interface");
    check.footer("Example:\n  installer-host check build/release/CorvaneInstall.bundle");
    addBundle(check, options);
    addFormat(check, options);
    addTimeout(check, options);
}

void addShowCommand(CLI::App& app, Options& options) {
    CLI::App& show = *app.add_subcommand(
        "show", "Show the current preferences, and the Finder flags of the vendor's folder and icon file");
    show.footer("Example:\n  installer-host show --root /tmp/root");
    addPlace(show, options, "Look at the private root DIR. This or --machine is required",
             "Look at the machine itself");
    addFormat(show, options);
}

/// What is wrong with a word that the parser cannot place.
std::string unknownWord(const CLI::App& subject, const std::string& word, bool isCommand) {
    const std::string name = word.substr(0, word.find('='));
    std::vector<std::string> known;
    if (isCommand) {
        known = {"run", "check", "show"};
    } else if (name.front() != '-') {
        return quoted(word) + " is one argument too many; does a name with spaces lack its quotes?";
    } else {
        for (const CLI::Option* option : subject.get_options()) {
            for (const std::string& longName : option->get_lnames()) {
                known.push_back("--" + longName);
            }
        }
    }
    const std::string nearest = nearestWord(name, known);
    return std::string(isCommand ? "there is no command " : "there is no option ") + quoted(name) +
           (nearest.empty() ? "" : "; did you mean " + nearest + "?");
}

std::string describeError(const CLI::App& app, const CLI::App& subject, const CLI::ParseError& error) {
    const bool hasCommand = &app != &subject;
    const std::vector<std::string> left = subject.remaining();
    if (!left.empty() && !left.front().empty()) {
        return unknownWord(subject, left.front(), !hasCommand && left.front().front() != '-');
    }
    const std::string text = error.what();
    if (text.find("disallowed flag override") != std::string::npos) {
        return "--" + text.substr(0, text.find(' ')) + " takes no value";
    }
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
        const bool lacksValue = text.find("missing") != std::string::npos;
        return text.substr(0, text.find(':')) + (lacksValue ? " needs a value" : " is given more than once");
    }
    const bool isMissing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    return isMissing && !hasCommand ? "a command is missing: run, check or show" : text;
}

/// What to print when the parser gives no set of options: help, the version or an error.
ParsedOptions stopWith(const CLI::App& app, const CLI::ParseError& error, Format format) {
    ParsedOptions parsed;
    parsed.options.format = format;
    const auto commands = app.get_subcommands();
    const CLI::App& subject = commands.empty() ? app : *commands.front();
    if (dynamic_cast<const CLI::CallForHelp*>(&error) != nullptr) {
        parsed.text = commands.empty() ? app.help() : subject.help("installer-host");
    } else if (dynamic_cast<const CLI::CallForVersion*>(&error) != nullptr) {
        parsed.text = std::string(VERSION_TEXT) + "\n";
    } else {
        const std::string command = commands.empty() ? "installer-host" : "installer-host " + subject.get_name();
        parsed.status = ExitStatus::Usage;
        parsed.text = describeError(app, subject, error);
        parsed.advice = "See '" + command + " --help' for how it is used.";
    }
    return parsed;
}

/// The format of the report, even when the rest of the command line is wrong.
Format wantedFormat(const std::vector<std::string>& arguments) {
    std::string before;
    for (const std::string& argument : arguments) {
        if (before == "--") {
            break;
        }
        if (argument == "--format=json" || (before == "--format" && argument == "json")) {
            return Format::Json;
        }
        before = argument;
    }
    return Format::Text;
}

/// An unset variable leaves "--root=", and CLI11 would then take the next argument as the value.
void requireValues(const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) {
        if (argument == "--") {
            break;
        }
        if (argument.size() > 3 && argument.compare(0, 2, "--") == 0 && argument.find('=') == argument.size() - 1) {
            throw CLI::ValidationError(argument.substr(0, argument.size() - 1), "its value is empty");
        }
    }
}

/// Sets what follows from the given options. Only --machine stands for the machine itself; no default does.
void complete(Options& options, const CLI::App& app) {
    options.command = app.got_subcommand("run")     ? Command::Run
                      : app.got_subcommand("check") ? Command::Check
                                                    : Command::Show;
    if (options.command != Command::Show) {
        checkedPath("BUNDLE", options.bundle);
    }
    if (options.command != Command::Check && !options.machine && options.root.empty()) {
        throw CLI::RequiredError(
            "say where to work: --root DIR for a private root, or --machine for the machine itself",
            CLI::ExitCodes::RequiredError);
    }
    if (options.command != Command::Run) {
        options.installation.steps.clear();
    }
    if (options.machine && options.scope.empty()) {
        options.scope = {"/Library", "/Applications"};
    }
}

}  // namespace

ParsedOptions parseOptions(int argc, const char* const* argv) {
    ParsedOptions parsed;
    Options& options = parsed.options;
    CLI::App app("Loads an installer plug-in, runs its steps as the vendor's installer does, and reports what changed.",
                 "installer-host");
    app.set_version_flag("--version", VERSION_TEXT, "Print the version and exit");
    app.footer(MAIN_FOOTER);
    app.require_subcommand(1);
    addRunCommand(app, options);
    addCheckCommand(app, options);
    addShowCommand(app, options);
    for (CLI::App* command : app.get_subcommands(nullptr)) {
        command->formatter(std::make_shared<HelpFormatter>());
    }
    app.formatter(std::make_shared<HelpFormatter>());
    options.format = wantedFormat({argv, argv + argc});
    try {
        requireValues({argv, argv + argc});
        app.parse(argc, argv);
        complete(options, app);
    } catch (const CLI::ParseError& error) {
        return stopWith(app, error, options.format);
    }
    parsed.proceed = true;
    return parsed;
}

}  // namespace host
