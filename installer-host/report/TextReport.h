#pragma once

#include <string>

#include "installer-host/RunResult.h"

namespace host {

// The reports for a reader. Bytes of preferences that are not UTF-8 are escaped.

std::string runText(const RunResult& result);
std::string runBody(const RunResult& result);  ///< the same without its head, which says what was run where

/// Of the same report what went wrong; empty when nothing did.
std::string runProblemsText(const RunResult& result);

/// `onlyFailed` leaves out what is as it should be.
std::string checkText(const RunResult& result, bool onlyFailed = false);

}  // namespace host
