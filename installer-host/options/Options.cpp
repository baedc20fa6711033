#include "installer-host/options/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>

#include "installer-host/options/Commands.h"
#include "installer-host/options/Completion.h"
#include "installer-host/options/HelpFormatter.h"
#include "installer-host/options/NearestWord.h"
#include "installer-host/options/OptionKinds.h"

namespace host {

namespace {

constexpr const char* VERSION_TEXT = "installer-host " INSTALLER_HOST_VERSION;

constexpr const char* MAIN_FOOTER = R"(Examples:
  installer-host check CorvaneInstall.bundle
  installer-host run --product 5100 --language 1 --root /tmp/root \
      CorvaneInstall.bundle
  installer-host undo journal.json --root /tmp/root
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
   7  something could not be stored, read or put back
   8  the outcome is not the expected one
   9  the time-out ended the run
  10  something changed, with --changes-exit; two roots differ, with --diff
  11  what --domain and --key name is not there
 129 to 143  128 and the number of the signal by which the user ended the run)";

/// A word of the command line that the parser could not place.
struct UnknownWord {
    std::string word;  ///< empty: there is none
    bool isOption = false;
};

/// The first of them. After a "--", which is itself one of them, no word is an option; what a command does not take
/// there, the parser leaves to the program.
UnknownWord unknownWordOf(const CLI::App& app, const CLI::App& subject) {
    for (const CLI::App* place : {&subject, &app}) {
        const std::vector<std::string> left = place->remaining();
        const auto isMark = [](const std::string& word) { return word == "--"; };
        const auto found = std::find_if_not(left.begin(), left.end(), isMark);
        if (found != left.end() && !found->empty()) {
            return {*found, found->front() == '-' && found == left.begin() && place == &subject};
        }
    }
    return {};
}

/// What is wrong with it.
std::string describeUnknown(const CLI::App& subject, const UnknownWord& unknown, bool hasCommand) {
    const bool isCommand = !hasCommand && !unknown.isOption;
    const std::string name = unknown.word.substr(0, unknown.word.find('='));
    std::vector<std::string> known;
    if (isCommand) {
        for (const CLI::App* command : subject.get_subcommands(nullptr)) {
            known.push_back(command->get_name());
        }
    } else if (!unknown.isOption) {
        return quoted(unknown.word) + " is one argument too many; does a name with spaces lack its quotes?";
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

/// "run, check or show"
std::string commandNames(const CLI::App& app) {
    const std::vector<const CLI::App*> commands = app.get_subcommands(nullptr);
    std::string names;
    for (const CLI::App* command : commands) {
        const char* separator = command == commands.front() ? "" : command == commands.back() ? " or " : ", ";
        names += separator + command->get_name();
    }
    return names;
}

std::string describeError(const CLI::App& app, const CLI::App& subject, const CLI::ParseError& error) {
    const bool hasCommand = &app != &subject;
    if (const UnknownWord unknown = unknownWordOf(app, subject); !unknown.word.empty()) {
        return describeUnknown(subject, unknown, hasCommand);
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
    return isMissing && !hasCommand ? "a command is missing: " + commandNames(app) : text;
}

/// What to print when the parser gives no set of options: help, the version or an error.
ParsedOptions stopWith(const CLI::App& app, const CLI::ParseError& error) {
    ParsedOptions parsed;
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

/// What an option with one of a few words comes to, even when the rest of the command line is wrong.
template <typename Value>
Value wanted(const std::vector<std::string>& arguments, const std::string& name,
             const std::vector<std::pair<std::string, Value>>& choices, Value otherwise) {
    std::string before;
    for (const std::string& argument : arguments) {
        if (before == "--") {
            break;
        }
        for (const auto& [word, value] : choices) {
            if (argument == name + "=" + word || (before == name && argument == word)) {
                return value;
            }
        }
        before = argument;
    }
    return otherwise;
}

/// How the user is to be told that the command line is wrong.
Options wantedOfWrong(const std::vector<std::string>& arguments) {
    Options options;
    options.format = wanted(arguments, "--format", FORMATS, options.format);
    options.color = wanted(arguments, "--color", COLORS, options.color);
    return options;
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

void addCompletionCommand(CLI::App& app, Shell& shell) {
    CLI::App& completion =
        *app.add_subcommand("completion", "Print the script by which a shell completes installer-host's command lines");
    completion.footer("Example, for the shell that runs it:\n  source <(installer-host completion bash)");
    addChoice<Shell>(completion, "SHELL", shell, {{"bash", Shell::Bash}, {"zsh", Shell::Zsh}, {"fish", Shell::Fish}},
                     "The shell that is to read the script")
        ->required();
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
    addMatrixCommand(app, options);
    addUndoCommand(app, options);
    addCheckCommand(app, options);
    addShowCommand(app, options);
    Shell shell = Shell::Bash;
    addCompletionCommand(app, shell);
    for (CLI::App* command : app.get_subcommands(nullptr)) {
        command->group("Commands");
        command->formatter(std::make_shared<HelpFormatter>());
    }
    app.formatter(std::make_shared<HelpFormatter>());
    const std::vector<std::string> arguments(argv, argv + argc);
    try {
        requireValues(arguments);
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        ParsedOptions stopped = stopWith(app, error);
        stopped.options = wantedOfWrong(arguments);
        return stopped;
    }
    if (app.got_subcommand("completion")) {
        parsed.text = completionScript(app, shell);
        return parsed;
    }
    parsed.proceed = true;
    return parsed;
}

}  // namespace host
