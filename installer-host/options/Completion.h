#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace host {

enum class Shell { Bash, Zsh, Fish };

/// The script by which the shell completes a command line of this program: its commands, their options and the values
/// of these, all taken from `app`. What an option's value is follows from its type: words with "|" between them, DIR or
/// BUNDLE for a folder, FILE, JOURNAL or REPORT for a file; of anything else nothing is known.
std::string completionScript(const CLI::App& app, Shell shell);

}  // namespace host
