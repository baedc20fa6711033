#pragma once

#include "installer-host/report/Paint.h"

namespace host {

enum class ColorWhen { Auto, Always, Never };

/// Chooses when text is in colour. Auto, which is the choice before the first call: on a terminal, unless the
/// environment has a NO_COLOR that is not empty, or TERM says that the terminal has no colours ("dumb", or nothing).
void chooseColors(ColorWhen when);

/// Whether text that goes to the descriptor `stream`, STDOUT_FILENO or STDERR_FILENO, is in colour.
bool hasColors(int stream);

/// The text as it goes to `stream`.
std::string paintedFor(int stream, std::string_view text, Paint paint);

}  // namespace host
