#pragma once

#include <string>

#include "installer-host/matrix/MatrixResult.h"

namespace host {

/// The report in the form that JUnit gave the world of continuous integration: a suite for each product, in it a case
/// for each combination with its whole report, and a failed case for each one that was expected and not run.
std::string matrixJUnit(const MatrixResult& matrix);

}  // namespace host
