#pragma once

#include <CLI/CLI.hpp>
#include <charconv>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "installer-host/options/Options.h"

namespace host {

// The kinds of options that the commands have. A value that an option does not take throws a CLI::ParseError, whose
// text says what is expected. `app` is the command that gets the option; the variable that receives the value must
// outlive it.

/// What the user wrote, for a message of one line.
std::string quoted(const std::string& text);

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

/// Adds an option without a value.
CLI::Option* addFlag(CLI::App& app, const std::string& name, bool& value, const std::string& help);

/// Adds an option with one of a few words.
template <typename Value>
CLI::Option* addChoice(CLI::App& app, const std::string& name, Value& value,
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
    return app.add_option_function<std::string>(name, choose, help)->type_name(names);
}

/// A path as it stands on the command line.
const std::string& checkedPath(const std::string& name, const std::string& path);

/// The same for an option's path. Without this, an option that lacks its value would take the next option as its value.
const std::string& checkedFolder(const std::string& name, const std::string& folder);

/// Adds an option with the path of a file.
CLI::Option* addFile(CLI::App& app, const std::string& name, std::string& file, const std::string& help);

/// Adds an option that may be given several times, each time with a folder.
CLI::Option* addFolders(CLI::App& app, const std::string& name, std::vector<std::string>& folders,
                        const std::string& help);

/// The words for the formats, and for when to use colours.
extern const std::vector<std::pair<std::string, Format>> FORMATS;
extern const std::vector<std::pair<std::string, ColorWhen>> COLORS;

/// The options that several commands have.
void addBundle(CLI::App& app, Options& options);
void addCalls(CLI::App& app, Options& options);  ///< which steps are called, and how
void addExpectation(CLI::App& app, Options& options);
void addFormat(CLI::App& app, Options& options);
void addTimeout(CLI::App& app, Options& options);

/// Adds what every command takes: how much it tells, in what colours, and the log. `verboseHelp` says what --verbose
/// adds to the report.
void addManners(CLI::App& app, Options& options, const std::string& verboseHelp = "");

/// Adds the option that names a private root.
CLI::Option* addRoot(CLI::App& app, Options& options, const std::string& help);

/// Adds the two options that say where the command works, and returns the second, --machine.
CLI::Option* addPlace(CLI::App& app, Options& options, const std::string& rootHelp, const std::string& machineHelp);

/// Throws unless one of the two was given. Only --machine stands for the machine itself; no default does.
void requirePlace(const Options& options);

}  // namespace host
