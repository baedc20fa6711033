#pragma once

#include <string>
#include <string_view>

namespace host {

/// The text as a terminal shows it without doing anything else: control characters but line feeds and tabs, those that
/// turn the direction of writing, and bytes that are not UTF-8 are written as \xNN.
std::string printable(std::string_view text);

/// How much the user wants to hear besides what is wrong and what is asked.
enum class Talk {
    Quiet,    ///< nothing; when something goes wrong, then what was held back until then
    Usual,    ///< what is worth knowing, and what the bundle's code prints
    Verbose,  ///< also what is done
    Detailed  ///< also how long that takes, and with what commands
};

/// Chooses it for the whole program; Usual before the first call.
void chooseTalk(Talk talk);

/// Prints a message on standard error; standard output is only for the report. The lines after the first are
/// indented, so that none that holds somebody else's text looks like another message.
void say(const std::string& message);

/// The same for why the program does not end as the user wished. What was held back comes first.
void sayWhatFailed(const std::string& message);

/// Prints a message for those who want to hear at least so much. Quiet users hear it when something fails; Verbose and
/// Detailed ones are for their users alone.
void remark(Talk least, const std::string& message);

/// Passes text on to standard error, such as what the bundle's code prints: it holds nothing that moves a terminal's
/// cursor. Held back for quiet users.
void passOn(std::string_view text);

}  // namespace host
