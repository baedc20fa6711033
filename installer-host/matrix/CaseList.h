#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "installer-host/matrix/InstallStatus.h"
#include "installer-host/options/Options.h"

namespace host {

/// One combination.
struct MatrixCase {
    std::int32_t product;
    std::int32_t language;
    std::size_t status;  ///< in CaseList::statuses
    std::string name;    ///< PRODUCT/LANGUAGE/STATUS
};

/// The combinations of a matrix, in the order in which the user named them; no two have the same name.
struct CaseList {
    std::vector<InstallStatus> statuses;
    std::vector<MatrixCase> cases;
    std::vector<std::string> passed;  ///< those that a report to be rerun has, and that are not run again
};

/// Makes the list that the command line asks for. The files that it names are read. Throws Failure: RootNotMade for one
/// that cannot be read, Usage for one that is not what it should be, and for a combination that is there twice.
CaseList casesOf(const MatrixOptions& options);

}  // namespace host
