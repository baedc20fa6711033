#pragma once

#include <string>
#include <string_view>

namespace host {

/// The text as a terminal shows it without doing anything else: control characters but line feeds and tabs, those that
/// turn the direction of writing, and bytes that are not UTF-8 are written as \xNN.
std::string printable(std::string_view text);

/// Prints a message on standard error; standard output is only for the report. The lines after the first are
/// indented, so that none that holds somebody else's text looks like another message.
void say(const std::string& message);

}  // namespace host
