#pragma once

#include <CLI/CLI.hpp>

#include "installer-host/options/Options.h"

namespace host {

// Each adds a command with its options to `app`. Parsing then fills `options`, which must outlive `app`.

void addRunCommand(CLI::App& app, Options& options);
void addMatrixCommand(CLI::App& app, Options& options);
void addUndoCommand(CLI::App& app, Options& options);
void addCheckCommand(CLI::App& app, Options& options);
void addShowCommand(CLI::App& app, Options& options);

}  // namespace host
