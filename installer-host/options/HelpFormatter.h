#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace host {

/// Writes the help so that it fits 80 columns: the options in a column, and what they do wrapped beside it.
class HelpFormatter : public CLI::Formatter {
public:
    HelpFormatter();
    std::string make_option(const CLI::Option* option, bool isPositional) const override;
    std::string make_subcommand(const CLI::App* command) const override;
    std::string make_description(const CLI::App* app) const override;
};

}  // namespace host
