#pragma once

#include <string>
#include <vector>

#include "installer-host/expect/Facts.h"

namespace host {

/// One respect in which an outcome is not the expected one. For a case of which nothing is expected, `isCase` is set,
/// the name's subject is that of the case, and the values are null.
struct Difference {
    FactName name;
    TypedValue expected;  ///< as Fact::value
    TypedValue found;
    bool isCase = false;
};

/// How `found` differs from what is expected, in the order of the names. Where the expectation is `complete`, a change
/// that it does not name is a difference, too.
std::vector<Difference> compare(const Facts& expected, bool complete, const Facts& found);

/// The difference in words, on one line and without a full stop: "com.corvane.updater: "UpdateInterval": expected 2
/// (integer), found 0 (integer)".
std::string describe(const Difference& difference);

/// The same as docs/report.schema.json has it.
Json toJson(const Difference& difference);

}  // namespace host
