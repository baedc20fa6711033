#pragma once

#include <string>

#include "installer-host/matrix/MatrixResult.h"

namespace host {

/// The report for a reader: a line for each case, the grid of products and languages with totals, and the whole reports
/// of the cases that failed. `document` is the one of the same matrix.
std::string matrixText(const MatrixResult& matrix, const Json& document);

/// Of the same report what went wrong; empty when nothing did.
std::string matrixProblemsText(const MatrixResult& matrix);

}  // namespace host
