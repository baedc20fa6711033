#pragma once

#include <string>
#include <string_view>

namespace host {

/// The text as a terminal shows it without doing anything else: control characters but line feeds and tabs, those that
/// turn the direction of writing, and bytes that are no UTF-8 are written as \xNN.
std::string printable(std::string_view text);

/// Tells the user something on standard error; standard output is for the report alone. A line feed begins a new line.
void say(const std::string& message);

}  // namespace host
