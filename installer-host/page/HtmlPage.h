#pragma once

#include <string>

#include "installer-host/report/JsonReport.h"

namespace host {

/// A report's document as one HTML page that needs nothing but itself, not even its script: for a person to read, on a
/// screen, on paper, or read out. It says all that the document says.
std::string htmlPage(const Json& document);

}  // namespace host
