#pragma once

#include <string>

#include "installer-host/ExitStatus.h"

namespace host {

/// One finding of `check`.
struct Finding {
    std::string subject;  ///< registration, exports, ...
    bool ok = false;
    std::string text;                      ///< what was found
    ExitStatus status = ExitStatus::Done;  ///< what the check comes to when it is not ok
};

}  // namespace host
