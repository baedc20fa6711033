#include "installer-host/options/Completion.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <vector>

namespace host {

namespace {

/// What can stand for a value.
struct ValueKind {
    enum class Is { Nothing, Unknown, Words, Folder, File } is;
    std::string name;   ///< as the help has it
    std::string words;  ///< with spaces between them
};

ValueKind kindOf(const std::string& typeName) {
    using Is = ValueKind::Is;
    if (typeName.find('|') != std::string::npos) {
        std::string words = typeName;
        std::replace(words.begin(), words.end(), '|', ' ');
        return {Is::Words, "word", words};
    }
    const auto isOneOf = [&](std::initializer_list<const char*> names) {
        return std::find(names.begin(), names.end(), typeName) != names.end();
    };
    return {isOneOf({"DIR", "BUNDLE"})               ? Is::Folder
            : isOneOf({"FILE", "JOURNAL", "REPORT"}) ? Is::File
                                                     : Is::Unknown,
            typeName, ""};
}

struct KnownOption {
    std::vector<std::string> names;  ///< with their dashes; none for an argument without a name
    ValueKind value;
    std::string help;
    bool isRepeatable;
};

struct KnownCommand {
    std::string name;  ///< empty for the program itself
    std::string help;
    std::vector<KnownOption> options;
};

/// What fits a line of a list: the first sentence, without what is in parentheses.
std::string shortHelp(const std::string& help) {
    std::size_t end = help.size();
    for (const char* stop : {"; ", ". ", " ("}) {
        end = std::min(end, help.find(stop));
    }
    return help.substr(0, end);
}

KnownOption knownOption(const CLI::Option& option) {
    const bool isFlag = !option.get_positional() && option.get_expected_max() == 0;
    const std::string type = option.get_type_name();
    KnownOption known{
        {},
        isFlag ? ValueKind{ValueKind::Is::Nothing, "", ""}
               : kindOf(option.get_positional() && type.find('|') == std::string::npos ? option.get_name() : type),
        shortHelp(option.get_description()),
        option.get_expected_max() > 1};
    for (const std::string& name : option.get_snames()) {
        known.names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        known.names.push_back("--" + name);
    }
    return known;
}

KnownCommand knownCommand(const CLI::App& app, const std::string& name) {
    KnownCommand command{name, shortHelp(app.get_description()), {}};
    for (const CLI::Option* option : app.get_options()) {
        command.options.push_back(knownOption(*option));
    }
    return command;
}

/// The program itself, then its commands.
std::vector<KnownCommand> knownCommands(const CLI::App& app) {
    std::vector<KnownCommand> commands{knownCommand(app, "")};
    for (const CLI::App* command : app.get_subcommands(nullptr)) {
        commands.push_back(knownCommand(*command, command->get_name()));
    }
    return commands;
}

std::string joined(const std::vector<std::string>& words, const std::string& between) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : between) + word;
    }
    return text;
}

/// The text with a backslash before each of `letters`.
std::string withBackslashes(const std::string& text, const std::string& letters) {
    std::string result;
    for (const char letter : text) {
        result += letters.find(letter) == std::string::npos ? "" : "\\";
        result += letter;
    }
    return result;
}

/// In single quotes for bash and zsh.
std::string inSingleQuotes(std::string text) {
    for (std::size_t at = text.find('\''); at != std::string::npos; at = text.find('\'', at + 4)) {
        text.replace(at, 1, "'\\''");
    }
    return "'" + text + "'";
}

// bash

constexpr const char* BASH_BEGINNING = R"(# Completion of installer-host's command lines in bash.

_installer_host() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command="" words="" kind="" i
    # bash parts --option=value into three words.
    if [[ $current == = ]]; then
        current=""
    elif [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((i = 1; i < COMP_CWORD; i++)); do
        if [[ ${COMP_WORDS[i]} != -* ]]; then
            command=${COMP_WORDS[i]}
            break
        fi
    done
    case $command in
)";

constexpr const char* BASH_END = R"(    esac
    COMPREPLY=()
    case $kind in
        words) mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current") ;;
        folder) compopt -o filenames && mapfile -t COMPREPLY < <(compgen -d -- "$current") ;;
        file) compopt -o filenames && mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
    esac
}

complete -F _installer_host installer-host
)";

/// What completes a value of this kind.
std::string bashValue(const ValueKind& value) {
    switch (value.is) {
        case ValueKind::Is::Words:
            return "kind=words words=\"" + value.words + "\"";
        case ValueKind::Is::Folder:
            return "kind=folder";
        case ValueKind::Is::File:
            return "kind=file";
        case ValueKind::Is::Nothing:
        case ValueKind::Is::Unknown:
            break;
    }
    return "kind=unknown";
}

std::string bashCommand(const KnownCommand& command, const std::string& otherWords) {
    std::string cases, argument = "kind=words words=\"" + otherWords + "\"";
    std::vector<std::string> names;
    for (const KnownOption& option : command.options) {
        names.insert(names.end(), option.names.begin(), option.names.end());
        if (option.names.empty()) {
            argument = bashValue(option.value);
        } else if (option.value.is != ValueKind::Is::Nothing) {
            cases += "                " + joined(option.names, " | ") + ") " + bashValue(option.value) + " ;;\n";
        }
    }
    return "        " + (command.name.empty() ? "\"\"" : command.name) + ")\n            case $previous in\n" + cases +
           "                *)\n                    if [[ $current == -* ]]; then\n" +
           "                        kind=words words=\"" + joined(names, " ") + "\"\n" +
           "                    else\n                        " + argument + "\n                    fi\n" +
           "                    ;;\n            esac\n            ;;\n";
}

std::string bashScript(const std::vector<KnownCommand>& commands) {
    std::vector<std::string> names;
    for (const KnownCommand& command : commands) {
        if (!command.name.empty()) {
            names.push_back(command.name);
        }
    }
    std::string text = BASH_BEGINNING;
    for (const KnownCommand& command : commands) {
        text += bashCommand(command, command.name.empty() ? joined(names, " ") : "");
    }
    return text + BASH_END;
}

// zsh

constexpr const char* ZSH_BEGINNING = R"(#compdef installer-host
# Completion of installer-host's command lines in zsh.

_installer_host() {
    local context state state_descr line
    typeset -A opt_args
)";

constexpr const char* ZSH_END = R"(            esac
            ;;
    esac
}

if [[ $funcstack[1] == _installer-host ]]; then
    _installer_host "$@"
else
    compdef _installer_host installer-host
fi
)";

std::string zshValue(const ValueKind& value) {
    std::string message = ":" + value.name + ":";
    switch (value.is) {
        case ValueKind::Is::Words:
            return message + "(" + value.words + ")";
        case ValueKind::Is::Folder:
            return message + "_files -/";
        case ValueKind::Is::File:
            return message + "_files";
        case ValueKind::Is::Unknown:
            return message;
        case ValueKind::Is::Nothing:
            break;
    }
    return "";
}

/// The words that tell _arguments, zsh's completion of options, of an option: one for each name.
std::string zshOptions(const KnownCommand& command, const std::string& indent) {
    std::string text;
    for (const KnownOption& option : command.options) {
        const std::string help = "[" + withBackslashes(option.help, "[]:\\") + "]";
        for (const std::string& name : option.names) {
            const bool isLong = name.compare(0, 2, "--") == 0;
            const std::string equals = isLong && option.value.is != ValueKind::Is::Nothing ? "=" : "";
            text += " \\\n" + indent +
                    inSingleQuotes((option.isRepeatable ? "*" : "") + name + equals + help + zshValue(option.value));
        }
        if (option.names.empty()) {
            text += " \\\n" + indent + inSingleQuotes("1" + zshValue(option.value));
        }
    }
    return text;
}

std::string zshScript(const std::vector<KnownCommand>& commands) {
    std::string list, cases;
    for (const KnownCommand& command : commands) {
        if (!command.name.empty()) {
            list +=
                "                " + inSingleQuotes(command.name + ":" + withBackslashes(command.help, ":\\")) + "\n";
            cases += "                " + command.name + ")\n                    _arguments" +
                     zshOptions(command, "                        ") + "\n                    ;;\n";
        }
    }
    return ZSH_BEGINNING + ("    _arguments -C" + zshOptions(commands.front(), "        ")) +
           " \\\n        '1:command:->command' \\\n        '*::argument:->argument'\n" +
           "    case $state in\n        command)\n            local -a commands=(\n" + list +
           "            )\n            _describe command commands\n            ;;\n" +
           "        argument)\n            case $line[1] in\n" + cases + ZSH_END;
}

// fish

std::string fishQuoted(const std::string& text) {
    return "'" + withBackslashes(text, "'\\") + "'";
}

/// `isArgument` for a value that no option stands before.
std::string fishValue(const ValueKind& value, bool isArgument) {
    std::string only = isArgument ? " -f" : " -x";
    switch (value.is) {
        case ValueKind::Is::Words:
            return only + " -a " + fishQuoted(value.words);
        case ValueKind::Is::Folder:
            return only + " -a '(__fish_complete_directories)'";
        case ValueKind::Is::File:
            return isArgument ? " -F" : " -r -F";
        case ValueKind::Is::Unknown:
            return only;
        case ValueKind::Is::Nothing:
            break;
    }
    return "";
}

std::string fishScript(const std::vector<KnownCommand>& commands) {
    std::string text = "# Completion of installer-host's command lines in fish.\n\ncomplete -c installer-host -f\n";
    for (const KnownCommand& command : commands) {
        const std::string beginning =
            "complete -c installer-host -n " +
            (command.name.empty() ? "__fish_use_subcommand" : "'__fish_seen_subcommand_from " + command.name + "'");
        if (!command.name.empty()) {
            text += "complete -c installer-host -n __fish_use_subcommand -a " + command.name + " -d " +
                    fishQuoted(command.help) + "\n";
        }
        for (const KnownOption& option : command.options) {
            text += beginning;
            for (const std::string& name : option.names) {
                const bool isLong = name.compare(0, 2, "--") == 0;
                text += isLong ? " -l " + name.substr(2) : " -s " + name.substr(1);
            }
            text += fishValue(option.value, option.names.empty()) + " -d " + fishQuoted(option.help) + "\n";
        }
    }
    return text;
}

}  // namespace

std::string completionScript(const CLI::App& app, Shell shell) {
    const std::vector<KnownCommand> commands = knownCommands(app);
    return shell == Shell::Bash  ? bashScript(commands)
           : shell == Shell::Zsh ? zshScript(commands)
                                 : fishScript(commands);
}

}  // namespace host
