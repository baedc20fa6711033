#pragma once

#include <string>
#include <utility>
#include <vector>

#include "installer-host/expect/CaseName.h"
#include "installer-host/expect/Facts.h"

namespace host {

// The text of a file for --expect, made to be reviewed: one fact a line, in a stable order. Facts that are no change
// are left out.

/// For one run.
std::string expectationFileText(const Facts& facts);

/// For the cases of a matrix, in the order in which they were asked for. What many cases have in common is written
/// once, under a name that has "*" for the parts that it does not depend on.
std::string expectationFileText(const std::vector<std::pair<CaseParts, Facts>>& cases);

}  // namespace host
