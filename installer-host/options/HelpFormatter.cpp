#include "installer-host/options/HelpFormatter.h"

#include <cstddef>
#include <sstream>

namespace host {

namespace {

constexpr std::size_t WIDTH = 80;
constexpr std::size_t COLUMN = 26;

/// The text in lines of at most `width`, each but the first after `indent` spaces.
std::string wrapped(const std::string& text, std::size_t width, std::size_t indent) {
    std::istringstream words(text);
    std::string result;
    std::size_t used = 0;
    for (std::string word; words >> word;) {
        if (used > 0 && used + 1 + word.size() > width) {
            result += "\n" + std::string(indent, ' ');
            used = 0;
        } else if (used > 0) {
            result += " ";
            ++used;
        }
        result += word;
        used += word.size();
    }
    return result;
}

/// A name, and beside it, or below it when it is long, what it stands for.
std::string entry(const std::string& name, const std::string& text) {
    const std::string left = "  " + name;
    const std::string space =
        left.size() + 2 <= COLUMN ? std::string(COLUMN - left.size(), ' ') : "\n" + std::string(COLUMN, ' ');
    return left + space + wrapped(text, WIDTH - COLUMN, COLUMN) + "\n";
}

}  // namespace

HelpFormatter::HelpFormatter() {
    label("Positionals", "Argument");
    label("SUBCOMMAND", "COMMAND");
}

std::string HelpFormatter::make_option(const CLI::Option* option, bool isPositional) const {
    const std::string value = isPositional || option->get_expected_max() == 0 ? "" : " " + option->get_type_name();
    return entry(make_option_name(option, isPositional) + value,
                 option->get_description() + (option->get_required() && !isPositional ? " (required)" : ""));
}

std::string HelpFormatter::make_subcommand(const CLI::App* command) const {
    return entry(command->get_name(), command->get_description());
}

std::string HelpFormatter::make_description(const CLI::App* app) const {
    return wrapped(app->get_description(), WIDTH, 0) + "\n\n";
}

}  // namespace host
